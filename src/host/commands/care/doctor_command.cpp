#include <algorithm>
#include <ostream>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/settings.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/care/account_findings.h"
#include "host/commands/care/care_commands.h"
#include "host/commands/care/item_findings.h"
#include "host/commands/care/machine_findings.h"
#include "host/commands/care/plugin_findings.h"
#include "host/commands/care/store_findings.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "store/location.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

constexpr std::size_t kSubjectWidth = 8;

void append(Findings& all, Findings more) {
  for (Finding& finding : more) { all.push_back(std::move(finding)); }
}
void append(Findings& all, const char* subject, Result<Findings> more) {
  if (more) { return append(all, *std::move(more)); }
  all.push_back(problem(subject, more.error().message, ""));
}

Result<Findings> lookAtEverything(CommandContext& context) {
  const Settings settings = Settings::ofUser();
  const store::Zone viewer = store::Zone::ofUser();
  ORLOCAL_TRY(const store::StoreOptions options, store::userStoreOptions(viewer));
  Findings all = settingsFindings(settings);
  append(all, zoneFindings(viewer, settings.isOn(Setting::kPartHourZones, false), store::now()));
  append(all, storeFindings(options));
  // What looks at items would stumble over what was found already.
  const bool sound = std::none_of(all.begin(), all.end(), [](const Finding& finding) {
    return finding.subject == "store" && finding.weight == Finding::Weight::kProblem;
  });
  if (const auto store = openUserStore(); sound && store) {
    append(all, "items", itemFindings(**store));
    append(all, "accounts", accountFindings(**store));
  }
  append(all, pluginFindings(context));
  return all;
}

/// Puts right what can be; says what it did, and leaves what failed as it was.
void mendAll(Findings& all) {
  for (Finding& finding : all) {
    if (!finding.mend) { continue; }
    if (const auto done = finding.mend(); done) {
      finding.weight = Finding::Weight::kFine;
      finding.sentence += tr(" That is put right now.");
      finding.remedy.clear();
    } else {
      finding.sentence += tr(" It could not be put right: {}.", done.error().message);
    }
    finding.mend = nullptr;
  }
}

const char* wordFor(Finding::Weight weight) {
  switch (weight) {
    case Finding::Weight::kFine:
      return "fine";
    case Finding::Weight::kNote:
      return "note";
    case Finding::Weight::kProblem:
      return "problem";
  }
  return "?";
}

nlohmann::json asJson(const Findings& all) {
  nlohmann::json list = nlohmann::json::array();
  for (const Finding& finding : all) {
    list.push_back({{"subject", finding.subject},
                    {"verdict", wordFor(finding.weight)},
                    {"finding", finding.sentence},
                    {"remedy", finding.remedy.empty() ? nlohmann::json() : nlohmann::json(finding.remedy)},
                    {"canBeFixed", finding.mend != nullptr}});
  }
  return list;
}

void print(const Findings& all, const Ink& ink, std::size_t width, std::ostream& out) {
  std::string subject;
  for (const Finding& finding : all) {
    const char* mark = finding.weight == Finding::Weight::kFine   ? " "
                       : finding.weight == Finding::Weight::kNote ? "-"
                                                                  : "!";
    const std::string head = finding.subject == subject ? "" : translated(finding.subject);
    subject = finding.subject;
    const std::size_t indent = kSubjectWidth + 3;
    out << ink.bold(padded(head, kSubjectWidth)) << ' ' << mark << ' '
        << foldedParagraph(printable(finding.sentence), width, indent).substr(indent);
    if (!finding.remedy.empty()) {
      out << std::string(indent, ' ')
          << ink.dim("-> " + foldedParagraph(printable(finding.remedy), width, indent + 3).substr(indent + 3));
    }
  }
}

Result<ExitStatus> runDoctor(bool fix, CommandContext& context) {
  ORLOCAL_TRY(Findings all, lookAtEverything(context));
  if (fix) { mendAll(all); }
  if (context.options.json) {
    printJson(asJson(all), context.streams.out);
  } else {
    print(all, Ink(context.streams.colors), terminalWidth(context.streams.outIsTerminal), context.streams.out);
  }
  const auto problems = std::count_if(
      all.begin(), all.end(), [](const Finding& finding) { return finding.weight == Finding::Weight::kProblem; });
  if (problems == 0) { return ExitStatus::kDone; }
  if (!context.options.json) {
    const bool fixable = std::any_of(all.begin(), all.end(), [](const Finding& each) { return each.mend != nullptr; });
    const std::string remedy = fixable ? tr("; orlocal doctor --fix puts right what it safely can") : "";
    context.streams.err << trn("orlocal: a problem was found{1}.\n", "orlocal: {0} problems were found{1}.\n",
                               static_cast<std::size_t>(problems), problems, remedy);
  }
  return ExitStatus::kFailed;
}

}  // namespace

void registerDoctorCommand(CommandLine& line) {
  auto fix = std::make_shared<bool>(false);
  CLI::App& doctor =
      line.add("doctor", "Look at settings, zone, store, items, accounts and plug-in, and say what to do.",
               [fix](CommandContext& context) { return runDoctor(*fix, context); });
  doctor.add_flag("--fix", *fix, "Put right what can be without losing anything");
  doctor.footer(tr("Ends with status 1 when there is a problem. Notes (-) are none.\n") +
                "  orlocal doctor\n  orlocal doctor --fix");
}

}  // namespace orlocal::host
