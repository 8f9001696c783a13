#include "accounts/transport/url.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "base/text.h"

namespace orlocal::accounts {
namespace {

/// The parts of an address, as they are written (RFC 3986, appendix B).
struct UrlParts {
  std::string_view scheme;     ///< "https"; empty when it is no http or https address
  std::string_view authority;  ///< "ann:secret@host:port"
  std::string_view path;       ///< with the query
};

bool beginsNoCase(std::string_view text, std::string_view beginning) {
  return text.size() >= beginning.size() && equalsNoCase(text.substr(0, beginning.size()), beginning);
}

UrlParts partsOf(std::string_view url) {
  UrlParts parts;
  for (const std::string_view scheme : {"http://", "https://"}) {
    if (!beginsNoCase(url, scheme)) { continue; }
    parts.scheme = url.substr(0, scheme.size() - 3);
    url.remove_prefix(scheme.size());
    parts.authority = url.substr(0, url.find_first_of("/?#"));
    url.remove_prefix(parts.authority.size());
    break;
  }
  parts.path = url.substr(0, url.find('#'));
  return parts;
}

std::string_view withoutUserInfo(std::string_view authority) { return authority.substr(authority.rfind('@') + 1); }

std::string inSmallLetters(std::string_view text) {
  std::string small(text);
  std::transform(small.begin(), small.end(), small.begin(), asciiLower<char>);
  return small;
}

struct HostAndPort {
  std::string_view host;  ///< with the brackets of an IPv6 address
  std::string_view port;
};

HostAndPort hostAndPortOf(std::string_view authority) {
  authority = withoutUserInfo(authority);
  const std::size_t bracket = authority.rfind(']');
  const std::size_t colon = authority.find(':', bracket == authority.npos ? 0 : bracket);
  if (colon == authority.npos) { return {authority, {}}; }
  return {authority.substr(0, colon), authority.substr(colon + 1)};
}

/// What two readers of an address may take for different hosts is none at all.
bool isHost(std::string_view host) {
  if (host.starts_with('[')) {
    return host.size() > 2 && host.ends_with(']') &&
           host.find_first_not_of("0123456789abcdefABCDEF:.", 1) == host.size() - 1;
  }
  const auto belongs = [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte >= '0' && byte <= '9') || (asciiLower(c) >= 'a' && asciiLower(c) <= 'z') || c == '.' || c == '-' ||
           c == '_' || byte >= 0x80;
  };
  return !host.empty() && std::all_of(host.begin(), host.end(), belongs);
}

std::optional<int> portOf(std::string_view text, std::string_view scheme) {
  constexpr int kMostPort = 65'535;
  if (text.empty()) { return equalsNoCase(scheme, "https") ? 443 : 80; }
  int port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc() || end != text.data() + text.size() || port < 1 || port > kMostPort) { return std::nullopt; }
  return port;
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') { return c - '0'; }
  const char small = asciiLower(c);
  return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

void appendEncoded(std::string& text, char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  text += {'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
}

bool isUnreserved(char c) {
  const char small = asciiLower(c);
  return (small >= 'a' && small <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_' || c == '~';
}

/// RFC 3986, 5.2.4, of a path that begins with a slash. One without dots stays byte for byte.
std::string withoutDots(std::string_view path) {
  if (path.find("/.") == path.npos) { return std::string(path); }
  const std::size_t query = path.find('?');
  std::vector<std::string_view> segments;
  std::string_view rest = path.substr(1, query == path.npos ? query : query - 1);
  while (true) {
    const std::size_t slash = rest.find('/');
    const std::string_view segment = rest.substr(0, slash);
    const bool last = slash == rest.npos;
    if (segment == "..") {
      if (!segments.empty()) { segments.pop_back(); }
    } else if (segment != ".") {
      segments.push_back(segment);
    }
    if (last) {
      // "a/." and "a/.." name folders.
      if (segment == "." || segment == "..") { segments.emplace_back(); }
      break;
    }
    rest.remove_prefix(slash + 1);
  }
  std::string result;
  for (const std::string_view segment : segments) { result.append("/").append(segment); }
  return result.append(query == path.npos ? "" : path.substr(query));
}

}  // namespace

std::optional<std::string> originOf(std::string_view url) {
  const UrlParts parts = partsOf(url);
  if (parts.scheme.empty()) { return std::nullopt; }
  const auto [host, portText] = hostAndPortOf(parts.authority);
  const std::optional<int> port = portOf(portText, parts.scheme);
  if (!isHost(host) || !port) { return std::nullopt; }
  if (parts.authority.find('\\') != parts.authority.npos) { return std::nullopt; }
  const bool own = port == portOf("", parts.scheme);
  return inSmallLetters(parts.scheme) + "://" + inSmallLetters(host) + (own ? "" : ":" + std::to_string(*port));
}

std::string hostOf(std::string_view url) {
  std::string_view host = hostAndPortOf(partsOf(url).authority).host;
  if (host.starts_with('[') && host.ends_with(']')) { host = host.substr(1, host.size() - 2); }
  return inSmallLetters(host);
}

bool isLoopback(std::string_view url) {
  const std::string host = hostOf(url);
  return host == "localhost" || host == "::1" ||
         (host.starts_with("127.") && host.find_first_not_of("0123456789.") == host.npos);
}

std::string_view pathOf(std::string_view url) {
  const std::string_view path = partsOf(url).path;
  return path.empty() ? "/" : path;
}

std::string withoutUser(std::string_view url) {
  if (originOf(url)) {
    const UrlParts parts = partsOf(url);
    return std::string(parts.scheme).append("://").append(withoutUserInfo(parts.authority)).append(parts.path);
  }
  // No address of ours, and yet somebody may have written a password into it, with all the characters that make it
  // none.
  const std::size_t slashes = url.find("://");
  const std::size_t begin = slashes == url.npos ? 0 : slashes + 3;
  const std::size_t at = url.rfind('@');
  if (at != url.npos && url.find(':', begin) < at) {
    return std::string(url.substr(0, begin)).append(url.substr(at + 1));
  }
  return std::string(url.substr(0, url.find('#')));
}

std::string shownUrl(std::string_view url) {
  std::string shown = withoutUser(url);
  shown.resize(std::min(shown.size(), shown.find('?')));
  return shown;
}

std::string resolved(std::string_view base, std::string_view reference) {
  for (const std::string_view scheme : {"http%3A//", "https%3A//", "http%3A%2F%2F", "https%3A%2F%2F"}) {
    // An absolute address that somebody encoded as a whole.
    if (beginsNoCase(reference, scheme)) { return resolved(base, decoded(reference)); }
  }
  std::string whole(reference);
  for (std::size_t at = whole.find('#'); at != whole.npos; at = whole.find('#', at)) { whole.replace(at, 1, "%23"); }
  if (!partsOf(whole).scheme.empty()) { return withoutUser(whole); }

  const UrlParts parts = partsOf(base);
  const std::string scheme = std::string(parts.scheme) + ":";
  if (whole.starts_with("//")) { return withoutUser(scheme + whole); }
  const std::string origin = scheme + "//" + std::string(withoutUserInfo(parts.authority));
  if (whole.starts_with('/')) { return origin + withoutDots(whole); }
  const std::string_view path = parts.path.substr(0, parts.path.find('?'));
  if (whole.empty()) { return origin + std::string(parts.path.empty() ? "/" : parts.path); }
  if (whole.starts_with('?')) { return origin + std::string(path.empty() ? "/" : path) + whole; }
  const std::string folder(path.substr(0, path.rfind('/') + 1));
  return origin + withoutDots((folder.empty() ? "/" : folder) + whole);
}

std::string listedUrl(std::string_view base, std::string_view reference) {
  std::string url = resolved(base, reference);
  const std::optional<std::string> origin = originOf(base);
  const bool lower = origin && origin->starts_with("https://") && beginsNoCase(url, "http://");
  return lower && hostOf(url) == hostOf(base) ? *origin + std::string(pathOf(url)) : url;
}

std::string comparablePath(std::string_view urlOrPath) {
  std::string_view rest = partsOf(urlOrPath).path;
  std::vector<std::string> segments;
  while (!rest.empty()) {
    const std::size_t slash = rest.find('/');
    std::string segment = decoded(rest.substr(0, slash));
    rest.remove_prefix(slash == rest.npos ? rest.size() : slash + 1);
    if (segment == "..") {
      if (!segments.empty()) { segments.pop_back(); }
    } else if (!segment.empty() && segment != ".") {
      segments.push_back(std::move(segment));
    }
  }
  std::string path;
  for (const std::string& segment : segments) { path.append("/").append(encodedSegment(segment)); }
  return path.empty() ? "/" : path;
}

std::string encodedSegment(std::string_view segment) {
  std::string encoded;
  for (const char c : segment) {
    if (isUnreserved(c)) {
      encoded += c;
    } else {
      appendEncoded(encoded, c);
    }
  }
  return encoded;
}

std::string decoded(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int high = text[i] == '%' && i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
    const int low = high >= 0 ? hexDigit(text[i + 2]) : -1;
    if (low >= 0) {
      plain += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

std::string sendable(std::string_view url) {
  std::string sent;
  for (const char c : url) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte <= ' ' || byte >= 0x7F || std::string_view("\"<>\\^`{|}").find(c) != std::string_view::npos) {
      appendEncoded(sent, c);
    } else {
      sent += c;
    }
  }
  return sent;
}

}  // namespace orlocal::accounts
