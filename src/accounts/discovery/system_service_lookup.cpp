#include <algorithm>
#include <array>
#include <tuple>

#include <arpa/nameser.h>
#include <netinet/in.h>
#include <resolv.h>

#include "accounts/discovery/discovery.h"

namespace orlocal::accounts {
namespace {

/// The resolver's state, which other threads need not share.
class Resolver {
 public:
  Resolver() : m_works(::res_ninit(&m_state) == 0) {}
  Resolver(const Resolver&) = delete;
  Resolver& operator=(const Resolver&) = delete;
  ~Resolver() {
    if (m_works) { ::res_nclose(&m_state); }
  }

  /// Calls `take` with each record of that type.
  template <class Take>
  void records(const std::string& name, ns_type type, Take take) {
    std::array<unsigned char, 65'536> answer{};
    const int length =
        m_works ? ::res_nsearch(&m_state, name.c_str(), ns_c_in, type, answer.data(), answer.size()) : -1;
    ns_msg message{};
    // An answer longer than the room was cut.
    if (length <= 0 || length > static_cast<int>(answer.size()) ||
        ::ns_initparse(answer.data(), length, &message) != 0) {
      return;
    }
    for (int i = 0; i < ns_msg_count(message, ns_s_an); ++i) {
      ns_rr record{};
      if (::ns_parserr(&message, ns_s_an, i, &record) == 0 && ns_rr_type(record) == type) { take(message, record); }
    }
  }

 private:
  struct __res_state m_state {};
  bool m_works;
};

struct RankedRecord {
  unsigned priority = 0;
  unsigned weight = 0;
  ServiceRecord record;
};

/// RFC 2782: priority, weight and port, two bytes each, then the target.
std::vector<RankedRecord> serviceRecords(Resolver& resolver, const std::string& name) {
  constexpr int kTargetAt = 6;
  std::vector<RankedRecord> found;
  resolver.records(name, ns_t_srv, [&](const ns_msg& message, const ns_rr& record) {
    std::array<char, NS_MAXDNAME> target{};
    const unsigned char* data = ns_rr_rdata(record);
    if (ns_rr_rdlen(record) <= kTargetAt || ::ns_name_uncompress(ns_msg_base(message), ns_msg_end(message),
                                                                 data + kTargetAt, target.data(), target.size()) < 0) {
      return;
    }
    const auto number = [&](int at) { return ns_get16(data + at); };
    // A root as the target says that there is no such service.
    const std::string host = target.data();
    if (!host.empty() && host != ".") {
      found.push_back({number(0), number(2), {host, static_cast<int>(number(4)), ""}});
    }
  });
  return found;
}

/// RFC 6764, 4: "path=/dav".
std::string servicePath(Resolver& resolver, const std::string& name) {
  constexpr std::string_view kKey = "path=";
  std::string path;
  resolver.records(name, ns_t_txt, [&](const ns_msg&, const ns_rr& record) {
    const unsigned char* data = ns_rr_rdata(record);
    const std::size_t length = ns_rr_rdlen(record);
    for (std::size_t at = 0; at < length;) {
      const std::size_t size = std::min<std::size_t>(data[at], length - at - 1);
      const std::string_view text(reinterpret_cast<const char*>(data) + at + 1, size);
      if (path.empty() && text.starts_with(kKey) && text.substr(kKey.size()).starts_with('/')) {
        path = text.substr(kKey.size());
      }
      at += 1 + size;
    }
  });
  return path;
}

}  // namespace

std::vector<ServiceRecord> systemServiceLookup(const std::string& service, const std::string& domain) {
  const std::string name =
      service + "." + domain + ".";  // a dot at the end: no domain of this machine's is tried as well
  Resolver resolver;
  std::vector<RankedRecord> ranked = serviceRecords(resolver, name);
  std::stable_sort(ranked.begin(), ranked.end(), [](const RankedRecord& left, const RankedRecord& right) {
    return std::tuple(left.priority, right.weight) < std::tuple(right.priority, left.weight);
  });
  const std::string path = ranked.empty() ? std::string() : servicePath(resolver, name);
  std::vector<ServiceRecord> found;
  for (RankedRecord& one : ranked) {
    one.record.path = path;
    found.push_back(std::move(one.record));
  }
  return found;
}

}  // namespace orlocal::accounts
