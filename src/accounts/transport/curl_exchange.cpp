#include "accounts/transport/curl_exchange.h"

#include <algorithm>
#include <array>
#include <mutex>

#include <curl/curl.h>
#include <fmt/format.h>

#include "accounts/transport/url.h"
#include "base/text.h"
#include "base/translation.h"

namespace orlocal::accounts {
namespace {

constexpr std::size_t kMostHeaderBytes = 1U << 20U;

/// The answer while it comes in.
struct Incoming {
  HttpResponse response;
  std::size_t headerBytes = 0;
  std::size_t mostBytes = 0;
  const std::atomic<bool>* stop = nullptr;
  bool wentOut = false;       ///< the request, or some of it
  bool wentOutTwice = false;  ///< without an answer in between
  bool answered = false;      ///< since then
  bool headEnded = false;     ///< the empty line behind the headers came
  bool tooLarge = false;
  bool stopped = false;
};

std::size_t takeHeader(const char* data, std::size_t one, std::size_t count, void* given) {
  auto& incoming = *static_cast<Incoming*>(given);
  const std::size_t size = one * count;
  incoming.answered = true;
  incoming.headerBytes += size;
  if (incoming.headerBytes > kMostHeaderBytes) {
    incoming.tooLarge = true;
    return 0;
  }
  std::string_view line(data, size);
  while (line.ends_with('\n') || line.ends_with('\r')) { line.remove_suffix(1); }
  auto& headers = incoming.response.headers;
  incoming.headEnded = incoming.headEnded || line.empty();
  if (line.starts_with("HTTP/")) {
    // Another answer begins, after one that only said "go on", or that asked who we are.
    headers.clear();
    incoming.response.body.clear();
    incoming.headEnded = false;
  } else if ((line.starts_with(' ') || line.starts_with('\t')) && !headers.empty()) {
    headers.back().value.append(" ").append(trimmed(line));
  } else if (const std::size_t colon = line.find(':'); colon != line.npos) {
    headers.push_back({std::string(line.substr(0, colon)), std::string(trimmed(line.substr(colon + 1)))});
  }
  return size;
}

std::size_t takeBody(const char* data, std::size_t one, std::size_t count, void* given) {
  auto& incoming = *static_cast<Incoming*>(given);
  const std::size_t size = one * count;
  if (size > incoming.mostBytes - incoming.response.body.size()) {
    incoming.tooLarge = true;
    return 0;
  }
  incoming.response.body.append(data, size);
  return size;
}

int tellProgress(void* given, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  auto& incoming = *static_cast<Incoming*>(given);
  incoming.stopped = incoming.stop != nullptr && *incoming.stop;
  return incoming.stopped ? 1 : 0;
}

/// libcurl sends a request once more by itself when a kept connection turns out to be dead.
int aboutToSend(void* given, char*, char*, int, int) {
  auto& incoming = *static_cast<Incoming*>(given);
  incoming.wentOutTwice = incoming.wentOutTwice || (incoming.wentOut && !incoming.answered);
  incoming.wentOut = true;
  incoming.answered = false;
  return CURL_PREREQFUNC_OK;
}

/// What a write that went out twice is told the second time may come from the first.
bool isRefusal(int status) {
  constexpr int kUnauthorizedStatus = 401;
  return status >= 400 && status != kUnauthorizedStatus;
}

bool isWrite(const std::string& method) {
  constexpr std::array<std::string_view, 5> kReading{"GET", "HEAD", "OPTIONS", "PROPFIND", "REPORT"};
  return std::find(kReading.begin(), kReading.end(), method) == kReading.end();
}

bool isAboutTrust(CURLcode code) {
  constexpr std::array kCodes{CURLE_PEER_FAILED_VERIFICATION, CURLE_SSL_CACERT_BADFILE, CURLE_SSL_INVALIDCERTSTATUS,
                              CURLE_SSL_ISSUER_ERROR,         CURLE_SSL_CRL_BADFILE,    CURLE_SSL_PINNEDPUBKEYNOTMATCH};
  return std::find(kCodes.begin(), kCodes.end(), code) != kCodes.end();
}

Trouble troubleOf(CURLcode code, const Incoming& incoming) {
  if (incoming.stopped) { return Trouble::kInterrupted; }
  if (incoming.tooLarge) { return Trouble::kTooLarge; }
  if (incoming.wentOut) { return Trouble::kAnswerLost; }
  if (isAboutTrust(code)) { return Trouble::kUntrusted; }
  return code == CURLE_URL_MALFORMAT || code == CURLE_UNSUPPORTED_PROTOCOL ? Trouble::kNonsense : Trouble::kUnreachable;
}

struct FreeList {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, FreeList>;

void add(HeaderList& list, const std::string& line) {
  if (curl_slist* longer = curl_slist_append(list.get(), line.c_str())) {
    static_cast<void>(list.release());
    list.reset(longer);
  }
}

HeaderList headersOf(const HttpRequest& request, const Credentials& credentials) {
  HeaderList list;
  bool hasType = false;
  for (const HttpHeader& header : request.headers) {
    // A field without content ends in a semicolon.
    add(list, header.value.empty() ? header.name + ";" : header.name + ": " + header.value);
    hasType = hasType || equalsNoCase(header.name, "Content-Type");
  }
  // Waiting for "100 Continue" stalls with many servers; a form's type stands for what has none.
  add(list, "Expect:");
  if (!hasType) { add(list, "Content-Type:"); }
  if (credentials.way == SignIn::kBearer) { add(list, "Authorization: Bearer " + credentials.secret); }
  return list;
}

}  // namespace

struct CurlExchange::Handle {
  explicit Handle(const TransportOptions& given) : options(given) {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    curl.reset(curl_easy_init());
    if (curl) { setForAll(); }
  }

  template <class Value>
  void set(CURLoption option, Value value) {
    curl_easy_setopt(curl.get(), option, value);
  }

  void setForAll() {
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    if (options.caFile) {
      set(CURLOPT_CAINFO, options.caFile->c_str());
      set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    }
    set(CURLOPT_ACCEPT_ENCODING, "gzip, deflate");
    set(CURLOPT_USERAGENT, "Orlocal");
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(options.connectTimeout.count()));
    set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(options.silence.count()));
    set(CURLOPT_TIMEOUT, static_cast<long>(options.longest.count()));
    set(CURLOPT_TCP_KEEPALIVE, 1L);
    set(CURLOPT_NOPROGRESS, 0L);
    set(CURLOPT_HEADERFUNCTION, &takeHeader);
    set(CURLOPT_WRITEFUNCTION, &takeBody);
    set(CURLOPT_XFERINFOFUNCTION, &tellProgress);
    set(CURLOPT_PREREQFUNCTION, &aboutToSend);
    set(CURLOPT_ERRORBUFFER, words.data());
  }

  void setRequest(const HttpRequest& request, const Credentials& credentials, Incoming& incoming) {
    const std::string url = *originOf(request.url) + sendable(pathOf(request.url));
    set(CURLOPT_URL, url.c_str());
    const bool noContent = request.body.empty() && (request.method == "GET" || request.method == "DELETE" ||
                                                    request.method == "OPTIONS" || request.method == "HEAD");
    // What stays on this machine goes through nobody's hands.
    set(CURLOPT_NOPROXY, isLoopback(request.url) ? "*" : nullptr);
    set(CURLOPT_NOBODY, 0L);
    if (noContent) {
      set(CURLOPT_HTTPGET, 1L);
      if (request.method == "HEAD") { set(CURLOPT_NOBODY, 1L); }
    } else {
      set(CURLOPT_POST, 1L);
      set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
      set(CURLOPT_POSTFIELDS, request.body.c_str());
    }
    set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
    const bool byName = credentials.way == SignIn::kBasic || credentials.way == SignIn::kDigest;
    set(CURLOPT_USERNAME, byName ? credentials.user.c_str() : nullptr);
    set(CURLOPT_PASSWORD, byName ? credentials.secret.c_str() : nullptr);
    set(CURLOPT_HTTPAUTH, static_cast<long>(credentials.way == SignIn::kDigest ? CURLAUTH_DIGEST : CURLAUTH_BASIC));
    for (const CURLoption option : {CURLOPT_HEADERDATA, CURLOPT_WRITEDATA, CURLOPT_XFERINFODATA, CURLOPT_PREREQDATA}) {
      set(option, &incoming);
    }
  }

  struct CleanUp {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  };
  const TransportOptions& options;
  std::unique_ptr<CURL, CleanUp> curl;
  std::array<char, CURL_ERROR_SIZE> words{};
  /// A server has closed a kept connection unannounced; writes get a new one each, so that none has to go out twice.
  bool connectionsDie = false;
};

CurlExchange::CurlExchange(const TransportOptions& options) : m_handle(std::make_unique<Handle>(options)) {}
CurlExchange::~CurlExchange() = default;

Answer<HttpResponse> CurlExchange::perform(const HttpRequest& request, const Credentials& credentials) {
  Handle& handle = *m_handle;
  Incoming incoming;
  incoming.mostBytes = handle.options.mostBytes;
  incoming.stop = handle.options.stop;
  const HeaderList headers = headersOf(request, credentials);
  if (!handle.curl) { return refusal(Trouble::kUnreachable, tr("There is no memory for a connection.")); }
  handle.setRequest(request, credentials, incoming);
  handle.set(CURLOPT_HTTPHEADER, headers.get());
  handle.words.front() = '\0';
  handle.set(CURLOPT_FRESH_CONNECT, handle.connectionsDie && isWrite(request.method) ? 1L : 0L);
  const CURLcode code = curl_easy_perform(handle.curl.get());
  handle.connectionsDie = handle.connectionsDie || incoming.wentOutTwice;
  handle.set(CURLOPT_HTTPHEADER, static_cast<curl_slist*>(nullptr));
  if (code != CURLE_OK) {
    const Trouble trouble = troubleOf(code, incoming);
    const std::string shown = shownUrl(request.url);
    switch (trouble) {
      case Trouble::kInterrupted:
        return refusal(trouble, tr("{}: stopped.", shown));
      case Trouble::kTooLarge:
        return refusal(trouble, tr("{}: the answer has more than {} bytes.", shown, incoming.mostBytes));
      default:
        return refusal(trouble,
                       fmt::format("{}: {}{}.", shown, trouble == Trouble::kAnswerLost ? "no whole answer came: " : "",
                                   handle.words.front() != '\0' ? handle.words.data() : curl_easy_strerror(code)));
    }
  }
  if (!incoming.headEnded) {
    // libcurl takes a connection that ends among the headers for the answer's end.
    return refusal(Trouble::kAnswerLost,
                   tr("{}: no whole answer came: the headers were cut short.", shownUrl(request.url)));
  }
  long status = 0;
  curl_easy_getinfo(handle.curl.get(), CURLINFO_RESPONSE_CODE, &status);
  incoming.response.status = static_cast<int>(status);
  if (incoming.wentOutTwice && isWrite(request.method) && isRefusal(incoming.response.status)) {
    return refusal(Trouble::kAnswerLost,
                   tr("{}: the connection broke; it may have been done before.", shownUrl(request.url)));
  }
  incoming.response.url = withoutUser(request.url);
  return std::move(incoming.response);
}

}  // namespace orlocal::accounts
