#include "accounts/dav/multistatus.h"

#include <charconv>
#include <system_error>

#include "accounts/dav/names.h"

namespace orlocal::accounts {
namespace {

PropStat readPropStat(XmlElement& element) {
  PropStat propstat;
  for (XmlElement& child : element.children) {
    if (child.is(dav::kStatus)) {
      propstat.status = statusOf(child.word());
    } else if (child.is(dav::kProp)) {
      for (XmlElement& property : child.children) { propstat.properties.push_back(std::move(property)); }
    } else if (child.is(dav::kError)) {
      propstat.errors = std::move(child.children);
    }
  }
  return propstat;
}

DavResponse readResponse(XmlElement& element) {
  DavResponse response;
  for (XmlElement& child : element.children) {
    if (child.is(dav::kHref)) {
      response.hrefs.emplace_back(child.word());
    } else if (child.is(dav::kStatus)) {
      response.status = statusOf(child.word());
    } else if (child.is(dav::kPropStat)) {
      response.propstats.push_back(readPropStat(child));
    } else if (child.is(dav::kError)) {
      response.errors = std::move(child.children);
    }
  }
  return response;
}

}  // namespace

const XmlElement* DavResponse::property(XmlName name) const {
  for (const PropStat& propstat : propstats) {
    if (!isSuccess(propstat.status)) { continue; }
    for (const XmlElement& property : propstat.properties) {
      if (property.is(name)) { return &property; }
    }
  }
  return nullptr;
}

std::optional<PropStat> DavResponse::refusal() const {
  if (status != 0 && !isSuccess(status)) { return PropStat{status, {}, errors}; }
  // 424 says only that another property was refused.
  constexpr int kFailedDependency = 424;
  const PropStat* first = nullptr;
  for (const PropStat& propstat : propstats) {
    if (isSuccess(propstat.status)) { continue; }
    if (first == nullptr || first->status == kFailedDependency) { first = &propstat; }
  }
  return first == nullptr ? std::nullopt : std::optional(*first);
}

std::optional<Multistatus> readMultistatus(std::string_view document) {
  Multistatus multistatus;
  auto token = readMultistatus(
      document, [&multistatus](DavResponse response) { multistatus.responses.push_back(std::move(response)); });
  if (!token) { return std::nullopt; }
  multistatus.syncToken = *std::move(token);
  return multistatus;
}

std::optional<std::string> readMultistatus(std::string_view document, const std::function<void(DavResponse)>& take) {
  std::string token;
  const auto root = readXml(document, [&](XmlElement child) {
    if (child.is(dav::kResponse)) {
      take(readResponse(child));
    } else if (child.is(dav::kSyncToken)) {
      token = child.word();
    }
  });
  return root && root->is(dav::kMultistatus) ? std::optional(std::move(token)) : std::nullopt;
}

std::vector<XmlElement> readErrorConditions(std::string_view document) {
  std::optional<XmlElement> root = readXml(document);
  return root && root->is(dav::kError) ? std::move(root->children) : std::vector<XmlElement>();
}

int statusOf(std::string_view line) {
  constexpr std::size_t kDigits = 3;
  const std::size_t blank = line.find(' ');
  if (!line.starts_with("HTTP/") || blank == line.npos) { return 0; }
  const std::string_view digits = line.substr(blank + 1, kDigits);
  int status = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), status);
  return error == std::errc() && end == digits.data() + kDigits ? status : 0;
}

}  // namespace orlocal::accounts
