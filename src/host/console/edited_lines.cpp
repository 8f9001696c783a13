#include "host/console/edited_lines.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <histedit.h>
#include <langinfo.h>
#include <unistd.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/calc/rendering.h"

namespace orlocal::host {

namespace {

constexpr int kHistorySize = 1000;

/// Characters beyond ASCII need a UTF-8 locale; a terminal without one gets the neutral one.
void useUtf8() {
  std::setlocale(LC_CTYPE, "");
  if (std::strcmp(::nl_langinfo(CODESET), "UTF-8") != 0) { std::setlocale(LC_CTYPE, "C.UTF-8"); }
}

}  // namespace

struct EditedLines::State {
  std::filesystem::path historyPath;
  Completer completer;
  EditLine* editor = nullptr;
  History* history = nullptr;
  std::string prompt;
  bool cancelled = false;

  static State& of(EditLine* editor) {
    void* data = nullptr;
    ::el_get(editor, EL_CLIENTDATA, &data);
    return *static_cast<State*>(data);
  }

  static char* showPrompt(EditLine* editor) { return of(editor).prompt.data(); }

  static unsigned char cancel(EditLine* editor, int) {
    State& state = of(editor);
    state.cancelled = true;
    std::fputs("^C\n", stdout);
    std::fflush(stdout);
    return CC_NEWLINE;
  }

  static unsigned char completeName(EditLine* editor, int) {
    const LineInfo* line = ::el_line(editor);
    const Completion completion =
        of(editor).completer({line->buffer, static_cast<std::size_t>(line->cursor - line->buffer)});
    if (completion.matching.empty()) { return CC_REFRESH_BEEP; }
    std::fputc('\n', stdout);
    for (const Candidate& candidate : completion.matching) {
      std::printf("  %s\n", calc::harmless(candidate.prototype).c_str());
    }
    std::fflush(stdout);
    if (!completion.insertion.empty()) { ::el_insertstr(editor, completion.insertion.c_str()); }
    return CC_REDISPLAY;
  }

  void save() {
    if (historyPath.empty()) { return; }
    HistEvent event{};
    ::history(history, &event, H_SAVE, historyPath.c_str());
  }
};

std::filesystem::path historyFile() {
  const char* state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && *state != '\0') { return std::filesystem::path(state) / "orlocal" / "history"; }
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home == '\0') { return {}; }
  return std::filesystem::path(home) / ".local" / "state" / "orlocal" / "history";
}

EditedLines::EditedLines(const std::filesystem::path& history, Completer completer)
    : m_state(new State{.historyPath = history, .completer = std::move(completer), .prompt = {}}) {}

Result<std::unique_ptr<EditedLines>> EditedLines::open(const std::filesystem::path& history, Completer completer) {
  std::unique_ptr<EditedLines> lines(new EditedLines(history, std::move(completer)));
  ORLOCAL_CHECK(lines->start());
  return lines;
}

Status EditedLines::start() {
  useUtf8();
  State& state = *m_state;
  state.editor = ::el_init("orlocal", stdin, stdout, stderr);
  state.history = ::history_init();
  if (state.editor == nullptr || state.history == nullptr) {
    return failure(ErrorCode::kIo, tr("the terminal cannot be edited on"));
  }
  const std::filesystem::path& history = state.historyPath;
  HistEvent event{};
  ::history(state.history, &event, H_SETSIZE, kHistorySize);
  ::history(state.history, &event, H_SETUNIQUE, 1);
  if (!history.empty()) {
    std::error_code error;
    std::filesystem::create_directories(history.parent_path(), error);
    std::filesystem::permissions(history.parent_path(), std::filesystem::perms::owner_all, error);
    ::history(state.history, &event, H_LOAD, history.c_str());
  }
  ::el_set(state.editor, EL_CLIENTDATA, &state);
  ::el_set(state.editor, EL_EDITOR, "emacs");
  ::el_set(state.editor, EL_PROMPT, &State::showPrompt);
  ::el_set(state.editor, EL_HIST, ::history, state.history);
  ::el_set(state.editor, EL_ADDFN, "orlocal-complete", "Complete a name", &State::completeName);
  ::el_set(state.editor, EL_ADDFN, "orlocal-cancel", "Clear the line", &State::cancel);
  ::el_set(state.editor, EL_BIND, "^I", "orlocal-complete", nullptr);
  ::el_source(state.editor, nullptr);
  // While a line is edited, Ctrl-C is a key like any other; while a calculation runs, it is a signal again.
  ::el_set(state.editor, EL_SETTY, "-d", "-isig", nullptr);
  ::el_set(state.editor, EL_BIND, "^C", "orlocal-cancel", nullptr);
  ::el_set(state.editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
  return {};
}

EditedLines::~EditedLines() {
  if (m_state->history != nullptr) { ::history_end(m_state->history); }
  if (m_state->editor != nullptr) { ::el_end(m_state->editor); }
}

LineSource::Line EditedLines::read(const std::string& prompt) {
  State& state = *m_state;
  state.prompt = prompt;
  state.cancelled = false;
  // Before the prompt shows, so that from then on every key is the editor's.
  ::el_set(state.editor, EL_PREP_TERM, 1);
  int count = 0;
  const char* text = ::el_gets(state.editor, &count);
  if (state.cancelled) { return {Outcome::kCancelled, {}}; }
  if (text == nullptr || count <= 0) { return {}; }
  std::string line(text, static_cast<std::size_t>(count));
  while (line.ends_with('\n') || line.ends_with('\r')) { line.pop_back(); }
  return {Outcome::kLine, std::move(line)};
}

void EditedLines::remember(const std::string& entry) {
  HistEvent event{};
  ::history(m_state->history, &event, H_ENTER, entry.c_str());
  // Now and not at the end: a plug-in that crashes should not take the history with it.
  m_state->save();
}

}  // namespace orlocal::host
