#pragma once

namespace orlocal::host::calc {

/// Counts one level of nesting for as long as it lives.
class NestingLevel {
 public:
  explicit NestingLevel(int& depth) : m_depth(depth) { ++m_depth; }
  ~NestingLevel() { --m_depth; }
  NestingLevel(const NestingLevel&) = delete;
  NestingLevel& operator=(const NestingLevel&) = delete;

 private:
  int& m_depth;
};

}  // namespace orlocal::host::calc
