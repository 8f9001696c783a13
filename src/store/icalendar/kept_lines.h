#pragma once

#include <string>
#include <string_view>
#include <vector>

// The content lines that an item or an alarm keeps beside its fields; see `Item::extra`.
namespace orlocal::store {

/// `kept` without the further parameters of a property whose value is no longer the one that they speak of.
std::string withoutParametersOf(std::string_view property, std::string_view kept);

/// `kept` without these and without the property's own lines. Those of components within stay.
std::string withoutLinesOf(std::string_view property, std::string_view kept);

/// `kept` with the lines of the property that `other` has, in place of its own.
std::string withLinesOf(std::string_view property, std::string_view kept, std::string_view other);

/// What the property's own lines say, each as it was written: escaped, lists joined (`unescapeText`, `splitUnescaped`).
/// What components within say is not said of the item.
std::vector<std::string_view> keptValues(std::string_view property, std::string_view kept);

}  // namespace orlocal::store
