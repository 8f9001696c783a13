#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/commands/command_line/command.h"
#include "store/import.h"

namespace orlocal::host {

/// Collects what came of importing files: printed file by file, or as one JSON list at the end.
class ImportReports {
 public:
  /// With `dryRun` what would become of each item is told, too.
  ImportReports(CommandContext& context, bool dryRun) : m_context(context), m_dryRun(dryRun) {}

  void add(const std::string& file, const Result<store::ImportReport>& outcome);
  /// A file that nobody named and that is nothing to import.
  void passOver(const std::string& file, const std::string& looksLike);
  /// What was removed in the end because no file had it.
  void removed(const std::vector<store::ImportedItem>& items);
  void nothingRemoved(const std::string& why);
  /// Failed when a file could not be imported or an item of one was refused.
  ExitStatus finish();

 private:
  void print(const std::string& file, const store::ImportReport& report);
  void printItems(const std::vector<store::ImportedItem>& items);

  CommandContext& m_context;
  const bool m_dryRun;
  nlohmann::json m_list = nlohmann::json::array();
  bool m_failed = false;
};

}  // namespace orlocal::host
