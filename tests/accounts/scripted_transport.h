#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "accounts/transport/http.h"

namespace orlocal::accounts {

/// Answers by method and address as it was told, and remembers what it was asked. What it was not told is 404.
class ScriptedTransport final : public Transport {
 public:
  /// Each call adds an answer; the last one goes on for ever.
  void on(const std::string& request, Answer<HttpResponse> answer) { m_answers[request].push_back(std::move(answer)); }
  /// "PROPFIND https://host/path" gets that status and body, from that very address.
  void on(const std::string& request, int status, std::string body = "", std::vector<HttpHeader> headers = {}) {
    on(request, HttpResponse{status, std::move(headers), std::move(body), ""});
  }

  Answer<HttpResponse> send(const HttpRequest& request) override {
    asked.push_back(request);
    auto& answers = m_answers[request.method + " " + request.url];
    if (answers.empty()) { return HttpResponse{404, {}, "", request.url}; }
    Answer<HttpResponse> answer = answers.front();
    if (answers.size() > 1) { answers.pop_front(); }
    if (answer && answer->url.empty()) { answer->url = request.url; }
    return answer;
  }

  std::vector<HttpRequest> asked;

 private:
  std::map<std::string, std::deque<Answer<HttpResponse>>> m_answers;
};

}  // namespace orlocal::accounts
