#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/commands/browsing/browse_desk.h"
#include "host/commands/browsing/browse_picture.h"
#include "host/commands/browsing/browse_state.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/store_command_fixture.h"
#include "store/time/clock.h"

namespace orlocal::host {

/// Somebody at the screen, without a terminal. It is Monday, 2 November 2026, 09:00.
class Browsing : public StoreCommand {
 protected:
  /// Sits down before a screen of that size. Whatever was imported before is there.
  void sitDown(Size size = {80, 24}) {
    m_store = openUserStore().value();
    m_streams = std::make_unique<Streams>(Streams{m_in, m_out, m_err});
    m_context = std::make_unique<CommandContext>(CommandContext{m_options, *m_streams, "orlocal"});
    m_desk = std::make_unique<BrowseDesk>(*m_context, registerAllCommands, *m_store, CalendarChoice());
    state.size = size;
    state.viewer = store::Zone::ofUser();
    state.setting = settingOfUser(state.viewer.toLocal(store::now()));
    state.day = state.today();
    look();
  }

  /// What the screen does when the bell has rung.
  void look() {
    const Status read = m_desk->refresh(state);
    ASSERT_TRUE(read) << read.error().message;
  }

  BrowseWish::Kind press(const BrowseKey& key) {
    const BrowseWish wish = orlocal::host::press(state, key);
    m_desk->serve(wish, state);
    look();
    return wish.kind;
  }
  BrowseWish::Kind press(BrowseKey::Name name) { return press(BrowseKey{name}); }
  /// Each character as a key.
  BrowseWish::Kind type(std::string_view text) {
    auto kind = BrowseWish::Kind::kNothing;
    for (const char c : text) { kind = press(BrowseKey::of(std::string(1, c))); }
    return kind;
  }

  /// The screen as text, without blanks at the ends of lines.
  std::string screen() const {
    std::string text;
    for (const PictureLine& line : pictureOf(state).lines) {
      std::string plain = plainText(line);
      plain.erase(plain.find_last_not_of(' ') + 1);
      text += plain + '\n';
    }
    return text;
  }
  std::string chosenTitle() const {
    const AgendaLine* row = chosenRow(state);
    return row == nullptr ? "" : row->item->title.value_or("");
  }
  /// What others see: a line for each thing of the coming week.
  std::string agenda() {
    run({"agenda", "--format", "{title} {start:%d %H:%M}{firstDay:%d}{due:%d}"});
    return out;
  }

  BrowseState state;

 private:
  std::istringstream m_in;
  std::ostringstream m_out, m_err;
  GlobalOptions m_options;
  std::unique_ptr<Streams> m_streams;
  std::unique_ptr<CommandContext> m_context;
  std::unique_ptr<store::CalendarStore> m_store;
  std::unique_ptr<BrowseDesk> m_desk;
};

}  // namespace orlocal::host
