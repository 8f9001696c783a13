#include "store/invitations/meaning.h"

#include <algorithm>
#include <array>

#include "base/text.h"

namespace orlocal::store {
namespace {

struct MethodRow {
  Method method;
  std::string_view name;
  bool organizers;
  std::array<Meaning, 4> meanings;  ///< not stored; older than what is stored; the same; newer
};

using enum Meaning;

// An answer is held against the answer before it, not against the item's own stamp: only its SEQUENCE can be old, which
// is "older" here.
constexpr MethodRow kMethods[] = {
    // clang-format off
    {Method::kNone,           "",               false, {kImport,  kImport, kImport,     kImport}},
    {Method::kPublish,        "PUBLISH",        false, {kImport,  kImport, kImport,     kImport}},
    {Method::kRequest,        "REQUEST",        true,  {kImport,  kStale,  kKnown,      kReplace}},
    {Method::kReply,          "REPLY",          false, {kNotHere, kStale,  kAnswer,     kAnswer}},
    {Method::kAdd,            "ADD",            true,  {kNotHere, kStale,  kAdd,        kAdd}},
    {Method::kCancel,         "CANCEL",         true,  {kNotHere, kStale,  kCancel,     kCancel}},
    {Method::kRefresh,        "REFRESH",        false, {kNotHere, kTellWish, kTellWish, kTellWish}},
    {Method::kCounter,        "COUNTER",        false, {kNotHere, kStale,  kTellChange, kTellChange}},
    {Method::kDeclineCounter, "DECLINECOUNTER", true,  {kNotHere, kTellNo, kTellNo,     kTellNo}},
    // clang-format on
};

const MethodRow& rowOf(Method method) {
  return *std::ranges::find(kMethods, method, &MethodRow::method);  // each has one
}

}  // namespace

Method methodOf(std::string_view text) {
  const auto* found =
      std::ranges::find_if(kMethods, [&](const MethodRow& row) { return equalsNoCase(row.name, trimmed(text)); });
  return found == std::end(kMethods) ? Method::kNone : found->method;
}

std::optional<Moment> revisedAt(const Item& item) { return std::max(item.modified, item.stamped); }

Beside besideStored(const Item& given, const Item& stored) {
  if (given.sequence != stored.sequence) { return given.sequence < stored.sequence ? Beside::kOlder : Beside::kNewer; }
  const auto ours = revisedAt(stored), theirs = revisedAt(given);
  if (!ours || !theirs || *ours == *theirs) { return Beside::kSame; }
  return *theirs < *ours ? Beside::kOlder : Beside::kNewer;
}

Meaning meaningOf(Method method, Beside beside) { return rowOf(method).meanings[static_cast<std::size_t>(beside)]; }

bool isOrganizers(Method method) { return rowOf(method).organizers; }

}  // namespace orlocal::store
