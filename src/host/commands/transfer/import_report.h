#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "host/commands/command_line/command.h"
#include "store/import.h"

namespace orlocal::host {

/// Collects what came of importing files: printed file by file, or as one JSON list at the end.
class ImportReports {
 public:
  explicit ImportReports(CommandContext& context) : m_context(context) {}

  void add(const std::string& file, const Result<store::ImportReport>& outcome);
  /// Failed when a file could not be imported or an item of one was refused.
  ExitStatus finish();

 private:
  void print(const std::string& file, const store::ImportReport& report);

  CommandContext& m_context;
  nlohmann::json m_list = nlohmann::json::array();
  bool m_failed = false;
};

}  // namespace orlocal::host
