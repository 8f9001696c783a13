#pragma once

#include <string>
#include <vector>

#include "store/model/remote.h"

namespace orlocal::accounts {

/// What the two versions of a conflict say of one thing, as lines; none where a version does not have it.
struct FieldVersions {
  std::string field;  ///< "title"; of a changed occurrence "title of 20261104T090000"
  std::vector<std::string> mine, theirs;
};

/// The fields that the conflict is about, for people: what `conflicts keep mine` takes. Everything in which the
/// versions differ where it is about the item as a whole.
std::vector<FieldVersions> differencesOf(const store::Conflict& conflict);

/// The names that the conflict was listed with.
std::vector<std::string> fieldsOf(const store::Conflict& conflict);

}  // namespace orlocal::accounts
