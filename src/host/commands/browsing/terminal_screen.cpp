#include "host/commands/browsing/terminal_screen.h"

#include <array>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <utility>

// Functions instead of macros of their names.
#define NCURSES_NOMACROS 1
#include <curses.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/utf.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {
namespace {

using Name = BrowseKey::Name;

struct CodeOfKey {
  wint_t code;
  Name name;
};
/// What the library calls keys that are no characters.
constexpr CodeOfKey kFunctionKeys[] = {{KEY_UP, Name::kUp},
                                       {KEY_DOWN, Name::kDown},
                                       {KEY_LEFT, Name::kLeft},
                                       {KEY_RIGHT, Name::kRight},
                                       {KEY_PPAGE, Name::kPageUp},
                                       {KEY_NPAGE, Name::kPageDown},
                                       {KEY_HOME, Name::kHome},
                                       {KEY_END, Name::kEnd},
                                       {KEY_ENTER, Name::kEnter},
                                       {KEY_DC, Name::kDelete},
                                       {KEY_BACKSPACE, Name::kBackspace}};
/// Our own numbers for what a terminal sends before and after a paste; the library's own end far below.
constexpr wint_t kPasteBegins = 0x5000, kPasteEnds = 0x5001;
/// Asks for that, and takes it back; terminals that know nothing of it pass it over.
constexpr const char* kMarkPastes = "\x1b[?2004h";
constexpr const char* kMarkNoPastes = "\x1b[?2004l";

constexpr CodeOfKey kControls[] = {{'\r', Name::kEnter},     {'\n', Name::kEnter},     {'\t', Name::kTab},
                                   {0x7F, Name::kBackspace}, {'\b', Name::kBackspace}, {0x1B, Name::kEscape}};

template <std::size_t size>
Name nameOf(const CodeOfKey (&keys)[size], wint_t code) {
  for (const CodeOfKey& key : keys) {
    if (key.code == code) { return key.name; }
  }
  return Name::kOther;
}

/// Where a colour stands among those of terminals that have 256: a cube of six steps a side.
int ofCube(const std::array<int, 3>& color) {
  const auto step = [](int part) { return (part * 5 + 127) / 255; };
  return 16 + 36 * step(color[0]) + 6 * step(color[1]) + step(color[2]);
}

/// The nearest of the eight that every coloured terminal has: a bit each for red, green and blue.
int ofEight(const std::array<int, 3>& color) {
  constexpr int kHalf = 110;
  return (color[0] > kHalf ? COLOR_RED : 0) | (color[1] > kHalf ? COLOR_GREEN : 0) |
         (color[2] > kHalf ? COLOR_BLUE : 0);
}

}  // namespace

/// The library's view of the terminal, and the signal of a new size as a descriptor.
struct TerminalScreen::Terminal {
  SCREEN* screen = nullptr;
  bool colors = false;
  int sizeSignal = -1;
  sigset_t before{};
  std::map<int, short> pairs;        ///< by colour
  std::optional<std::string> paste;  ///< as far as it has come

  ~Terminal() {
    if (screen != nullptr) {
      ::putp(kMarkNoPastes);
      ::endwin();
      ::delscreen(screen);
    }
    if (sizeSignal >= 0) {
      ::close(sizeSignal);
      ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
  }

  attr_t inkFor(const std::optional<store::Rgb>& color) {
    if (!colors || !color) { return A_NORMAL; }
    const int number = COLORS >= 256 ? ofCube(color->bytes()) : ofEight(color->bytes());
    const auto known = pairs.find(number);
    if (known != pairs.end()) { return static_cast<attr_t>(COLOR_PAIR(known->second)); }
    const auto pair = static_cast<short>(pairs.size() + 1);
    if (pair >= COLOR_PAIRS || ::init_pair(pair, static_cast<short>(number), -1) == ERR) { return A_NORMAL; }
    pairs.emplace(number, pair);
    return static_cast<attr_t>(COLOR_PAIR(pair));
  }
};

TerminalScreen::TerminalScreen(std::unique_ptr<Terminal> terminal) : m_terminal(std::move(terminal)) {}
TerminalScreen::~TerminalScreen() = default;

Result<std::unique_ptr<TerminalScreen>> TerminalScreen::open(bool colors) {
  // Our texts are in UTF-8 whatever the locale; this one is there on every system.
  std::setlocale(LC_CTYPE, "C.UTF-8");
  auto terminal = std::make_unique<Terminal>();
  sigset_t size;
  ::sigemptyset(&size);
  ::sigaddset(&size, SIGWINCH);
  ::pthread_sigmask(SIG_BLOCK, &size, &terminal->before);
  terminal->sizeSignal = ::signalfd(-1, &size, SFD_NONBLOCK | SFD_CLOEXEC);
  if (terminal->sizeSignal < 0) { return failure(ErrorCode::kIo, tr("the terminal: {}", systemReason(errno))); }
  terminal->screen = ::newterm(nullptr, stdout, stdin);
  if (terminal->screen == nullptr) {
    const char* type = std::getenv("TERM");
    return failure(ErrorCode::kNotFound,
                   tr("This system does not know the terminal \"{}\" (TERM); `orlocal agenda` and `orlocal month` need "
                      "to know nothing of it.",
                      printable(type == nullptr ? "" : type)));
  }
  ::cbreak();
  ::noecho();
  ::nonl();
  ::keypad(stdscr, TRUE);
  ::nodelay(stdscr, TRUE);
  // A key that sends several characters sends them at once; the escape key is not held back for long.
  ::set_escdelay(25);
  ::define_key("\x1b[200~", static_cast<int>(kPasteBegins));
  ::define_key("\x1b[201~", static_cast<int>(kPasteEnds));
  ::putp(kMarkPastes);
  terminal->colors = colors && ::has_colors() && ::start_color() != ERR && ::use_default_colors() != ERR;
  return std::unique_ptr<TerminalScreen>(new TerminalScreen(std::move(terminal)));
}

bool TerminalScreen::isGone() const {
  termios settings{};
  return ::tcgetattr(STDIN_FILENO, &settings) != 0;
}

Size TerminalScreen::size() const {
  return {static_cast<std::size_t>(std::max(1, getmaxx(stdscr))),
          static_cast<std::size_t>(std::max(1, getmaxy(stdscr)))};
}

void TerminalScreen::show(const Picture& picture) {
  ::erase();
  for (std::size_t line = 0; line < picture.lines.size(); ++line) {
    std::size_t column = 0;
    for (const Piece& piece : picture.lines[line]) {
      attr_t look = m_terminal->inkFor(piece.look.color);
      if (piece.look.bold) { look |= A_BOLD; }
      if (piece.look.dim) { look |= A_DIM; }
      if (piece.look.reversed) { look |= A_REVERSE; }
      ::attrset(static_cast<int>(look));
      // Each piece at its own place: what one terminal takes for wide moves nothing but itself.
      ::mvaddstr(static_cast<int>(line), static_cast<int>(column), piece.text.c_str());
      column += displayWidth(piece.text);
    }
  }
  ::attrset(A_NORMAL);
  ::curs_set(picture.cursor ? 1 : 0);
  if (picture.cursor) { ::move(static_cast<int>(picture.cursor->line), static_cast<int>(picture.cursor->column)); }
  ::refresh();
}

std::optional<BrowseKey> TerminalScreen::key() {
  auto& paste = m_terminal->paste;
  for (;;) {
    wint_t code = 0;
    const int kind = ::get_wch(&code);
    if (kind == ERR) { return std::nullopt; }
    if (kind == KEY_CODE_YES) {
      if (code == kPasteBegins) { paste.emplace(); }
      if (code == kPasteEnds && paste) { return BrowseKey::pasted(*std::exchange(paste, std::nullopt)); }
      // A paste holds no keys.
      if (paste || code == kPasteEnds) { continue; }
      return BrowseKey{nameOf(kFunctionKeys, code)};
    }
    if (paste) {
      append(*paste, static_cast<char32_t>(code));
      continue;
    }
    if (code < 0x20 || code == 0x7F) { return BrowseKey{nameOf(kControls, code)}; }
    std::string text;
    append(text, static_cast<char32_t>(code));
    return BrowseKey::of(std::move(text));
  }
}

int TerminalScreen::keyDescriptor() const { return STDIN_FILENO; }
int TerminalScreen::sizeDescriptor() const { return m_terminal->sizeSignal; }

void TerminalScreen::takeSize() {
  signalfd_siginfo taken{};
  bool changed = false;
  while (::read(m_terminal->sizeSignal, &taken, sizeof taken) > 0) { changed = true; }
  winsize size{};
  if (!changed || ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0) { return; }
  ::resize_term(size.ws_row, size.ws_col);
  // What a terminal does with its lines when it changes is its own affair.
  ::clearok(curscr, TRUE);
}

}  // namespace orlocal::host
