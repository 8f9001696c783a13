#pragma once

#include <iosfwd>
#include <string>

namespace orlocal::host {

/// Where the console's lines come from: a person at a terminal, or a pipe.
class LineSource {
 public:
  virtual ~LineSource() = default;

  enum class Outcome {
    kLine,
    kCancelled,  ///< the person pressed Ctrl-C; what was typed is gone
    kEnd,        ///< there are no more lines
  };
  struct Line {
    Outcome outcome = Outcome::kEnd;
    std::string text;  ///< without its line break
  };

  virtual Line read(const std::string& prompt) = 0;

  /// Keeps a whole entry for later recall, where the source can recall.
  virtual void remember(const std::string& entry) = 0;
};

/// Lines of a stream. Shows no prompt and remembers nothing.
class StreamLines : public LineSource {
 public:
  explicit StreamLines(std::istream& in) : m_in(in) {}

  Line read(const std::string& prompt) override;
  void remember(const std::string&) override {}

 private:
  std::istream& m_in;
};

}  // namespace orlocal::host
