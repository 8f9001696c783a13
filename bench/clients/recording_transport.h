#pragma once

#include <cstddef>
#include <vector>

#include "accounts/transport/http.h"

namespace orlocal::bench {

/// Passes requests on and counts them; keeps what they were where others are to send the same.
class RecordingTransport final : public accounts::Transport {
 public:
  /// `kept` may be null.
  RecordingTransport(accounts::Transport& carrier, std::size_t& count, std::vector<accounts::HttpRequest>* kept)
      : m_carrier(carrier), m_count(count), m_kept(kept) {}

  accounts::Answer<accounts::HttpResponse> send(const accounts::HttpRequest& request) override {
    ++m_count;
    if (m_kept != nullptr) { m_kept->push_back(request); }
    return m_carrier.send(request);
  }

 private:
  accounts::Transport& m_carrier;
  std::size_t& m_count;
  std::vector<accounts::HttpRequest>* m_kept;
};

}  // namespace orlocal::bench
