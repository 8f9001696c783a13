#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/sync/resource_text.h"
#include "store/model/model.h"

// An item field by field, in the one way in which this program writes it, so that two spellings of one thing are equal.
namespace orlocal::accounts {

/// Lines and alarms under the names that item_fields.h has; bookkeeping is left out, each date of a list is a line.
using Fields = std::map<std::string, std::vector<std::string>, std::less<>>;

/// None at all for null.
Fields fieldsOf(const store::Item* item);
/// Empty where there is no such field.
const std::vector<std::string>& linesOf(const Fields& fields, std::string_view field);

/// How this program writes a line, or an alarm, that a server has in such a component; none where that takes several.
std::optional<std::string> inOurSpelling(const std::string& component, const TextLine& line, std::string_view field);
std::optional<std::string> inOurSpelling(const std::string& component, const TextComponent& alarm,
                                         std::string_view field);

/// The components of an item by their original start in whatever clock it is written; the main one under the empty key.
using Parts = std::map<std::string, const store::Item*>;
/// Borrows; no parts for null.
Parts partsOf(const store::WholeItem* whole);
/// Null where there is none.
const store::Item* partOf(const Parts& parts, const std::string& key);

/// Whether two states of an item differ in nothing but when and by whom they were written.
bool saysTheSame(const store::WholeItem& one, const store::WholeItem& other);

}  // namespace orlocal::accounts
