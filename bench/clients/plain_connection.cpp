#include "plain_connection.h"

#include <stdexcept>

#include <curl/curl.h>
#include <fmt/format.h>

namespace orlocal::bench {
namespace {

std::size_t keep(const char* data, std::size_t one, std::size_t count, void* body) {
  if (body != nullptr) { static_cast<std::string*>(body)->append(data, one * count); }
  return one * count;
}

int count(CURL*, curl_infotype type, char*, std::size_t size, void* given) {
  auto& bytes = *static_cast<Bytes*>(given);
  if (type == CURLINFO_HEADER_OUT || type == CURLINFO_DATA_OUT) { bytes.sent += size; }
  if (type == CURLINFO_HEADER_IN || type == CURLINFO_DATA_IN) { bytes.received += size; }
  return 0;
}

struct FreeList {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

void add(std::unique_ptr<curl_slist, FreeList>& list, const std::string& line) {
  curl_slist* longer = curl_slist_append(list.get(), line.c_str());
  static_cast<void>(list.release());
  list.reset(longer);
}

}  // namespace

void PlainConnection::CleanUp::operator()(void* handle) const { curl_easy_cleanup(handle); }

PlainConnection::PlainConnection() : m_handle(curl_easy_init()) {
  curl_easy_setopt(m_handle.get(), CURLOPT_WRITEFUNCTION, &keep);
  curl_easy_setopt(m_handle.get(), CURLOPT_VERBOSE, 1L);
  curl_easy_setopt(m_handle.get(), CURLOPT_DEBUGFUNCTION, &count);
  curl_easy_setopt(m_handle.get(), CURLOPT_DEBUGDATA, &m_bytes);
  curl_easy_setopt(m_handle.get(), CURLOPT_USERAGENT, "Orlocal");
  curl_easy_setopt(m_handle.get(), CURLOPT_NOSIGNAL, 1L);
}
PlainConnection::~PlainConnection() = default;

void PlainConnection::send(const accounts::HttpRequest& request, const std::string& user, const std::string& password,
                           std::string* body) {
  CURL* handle = m_handle.get();
  std::unique_ptr<curl_slist, FreeList> headers;
  for (const accounts::HttpHeader& header : request.headers) { add(headers, header.name + ": " + header.value); }
  add(headers, "Expect:");
  // As a header of ours: libcurl then leaves what comes as it is.
  if (body == nullptr) { add(headers, "Accept-Encoding: gzip, deflate"); }
  curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers.get());
  curl_easy_setopt(handle, CURLOPT_URL, request.url.c_str());
  if (request.body.empty()) {
    curl_easy_setopt(handle, CURLOPT_HTTPGET, 1L);
  } else {
    curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE, static_cast<long>(request.body.size()));
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, request.body.c_str());
  }
  curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, request.method.c_str());
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, body);
  curl_easy_setopt(handle, CURLOPT_USERNAME, user.c_str());
  curl_easy_setopt(handle, CURLOPT_PASSWORD, password.c_str());
  const CURLcode code = curl_easy_perform(handle);
  curl_easy_setopt(handle, CURLOPT_HTTPHEADER, nullptr);
  long status = 0;
  curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
  if (code != CURLE_OK || status >= 400) {
    throw std::runtime_error(
        fmt::format("{} {} without us: {}, status {}", request.method, request.url, curl_easy_strerror(code), status));
  }
}

accounts::HttpRequest again(accounts::HttpRequest request, int number) {
  std::erase_if(request.headers, [](const accounts::HttpHeader& header) { return header.name.starts_with("If-"); });
  if (request.method == "PUT") { request.body = withTitle(std::move(request.body), fmt::format("Plain {}", number)); }
  return request;
}

std::string withTitle(std::string text, const std::string& title) {
  constexpr std::string_view kName = "\nSUMMARY:";
  const std::size_t at = text.find(kName);
  if (at == text.npos) { throw std::runtime_error("an event without a title"); }
  const std::size_t begin = at + kName.size();
  return text.replace(begin, text.find_first_of("\r\n", begin) - begin, title);
}

}  // namespace orlocal::bench
