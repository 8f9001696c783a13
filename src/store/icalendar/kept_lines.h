#pragma once

#include <string>
#include <string_view>

// The content lines that an item or an alarm keeps beside its fields; see `Item::extra`.
namespace orlocal::store {

/// `kept` without the further parameters of a property whose value is no longer the one that they speak of.
std::string withoutParametersOf(std::string_view property, std::string_view kept);

/// `kept` without these and without the property's own lines. Those of components within stay.
std::string withoutLinesOf(std::string_view property, std::string_view kept);

}  // namespace orlocal::store
