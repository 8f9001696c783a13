#include "accounts/sync/account_state.h"

#include <algorithm>

#include <nlohmann/json.hpp>

namespace orlocal::accounts {
namespace {

using nlohmann::json;

constexpr const char* kKinds[] = {"caldav", "subscription", "birthdays"};

constexpr struct {
  Trouble trouble;
  std::string_view name;
} kTroubleNames[] = {
    {Trouble::kUnreachable, "unreachable"},
    {Trouble::kAnswerLost, "answerLost"},
    {Trouble::kUntrusted, "untrusted"},
    {Trouble::kUnauthorized, "unauthorized"},
    {Trouble::kForbidden, "forbidden"},
    {Trouble::kNotFound, "notFound"},
    {Trouble::kClash, "clash"},
    {Trouble::kPrecondition, "precondition"},
    {Trouble::kLocked, "locked"},
    {Trouble::kTooLarge, "tooLarge"},
    {Trouble::kRefused, "refused"},
    {Trouble::kLater, "later"},
    {Trouble::kFull, "full"},
    {Trouble::kInvalidToken, "invalidToken"},
    {Trouble::kUnsupported, "unsupported"},
    {Trouble::kServerError, "serverError"},
    {Trouble::kNonsense, "nonsense"},
    {Trouble::kInterrupted, "interrupted"},
    {Trouble::kNoSecret, "noSecret"},
    {Trouble::kStore, "store"},
};

std::string_view nameOf(Trouble trouble) {
  return std::find_if(std::begin(kTroubleNames), std::end(kTroubleNames),
                      [&](const auto& row) { return row.trouble == trouble; })
      ->name;
}

json momentJson(const std::optional<store::Moment>& moment) {
  return moment ? json(moment->time_since_epoch().count()) : json(nullptr);
}

/// Reads fields of one object; what is missing or of another type stays as it is.
class JsonFields {
 public:
  explicit JsonFields(const json& object) : m_object(object) {}

  template <class Value>
  void read(const char* name, Value& value) const {
    const auto found = m_object.find(name);
    if (found == m_object.end() || found->is_null()) { return; }
    try {
      found->get_to(value);
    } catch (const json::exception&) {
      // Another program's idea of the field; ours begins anew.
    }
  }
  void read(const char* name, std::optional<store::Moment>& moment) const {
    std::optional<std::int64_t> micros = number(name);
    if (micros) { moment = store::Moment(std::chrono::microseconds(*micros)); }
  }
  void read(const char* name, std::optional<std::chrono::seconds>& seconds) const {
    if (const auto value = number(name)) { seconds = std::chrono::seconds(*value); }
  }
  void read(const char* name, std::optional<Trouble>& trouble) const {
    std::string word;
    read(name, word);
    for (const auto& row : kTroubleNames) {
      if (row.name == word) { trouble = row.trouble; }
    }
  }
  void read(const char* name, Keeps& keeps) const {
    if (const auto value = number(name); value && *value >= 0 && *value <= 2) { keeps = static_cast<Keeps>(*value); }
  }

 private:
  std::optional<std::int64_t> number(const char* name) const {
    const auto found = m_object.find(name);
    if (found == m_object.end() || !found->is_number_integer()) { return std::nullopt; }
    return found->get<std::int64_t>();
  }
  const json& m_object;
};

Result<json> objectOf(std::string_view text, const char* what) {
  json object = json::parse(text, nullptr, false);
  if (object.is_object()) { return object; }
  return failure(ErrorCode::kCorrupt, std::string("What the store keeps of ") + what +
                                          " is damaged; remove the account (orlocal account remove) and add it anew.");
}

}  // namespace

std::string AccountSettings::text() const {
  json object{{"kind", kKinds[static_cast<std::size_t>(kind)]},
              {"address", address},
              {"user", user},
              {"secret", secret},
              {"caFile", caFile},
              {"paused", paused}};
  if (every) { object["every"] = every->count(); }
  return object.dump();
}

Result<AccountSettings> AccountSettings::ofText(std::string_view text) {
  auto object = objectOf(text, "an account");
  if (!object) { return failure(std::move(object.error())); }
  const JsonFields fields(*object);
  AccountSettings settings;
  std::string kind;
  fields.read("kind", kind);
  for (std::size_t i = 0; i < std::size(kKinds); ++i) {
    if (kind == kKinds[i]) { settings.kind = static_cast<Kind>(i); }
  }
  fields.read("address", settings.address);
  fields.read("user", settings.user);
  fields.read("secret", settings.secret);
  fields.read("caFile", settings.caFile);
  fields.read("paused", settings.paused);
  fields.read("every", settings.every);
  return settings;
}

std::string AccountState::text() const {
  json object{{"principal", principal},
              {"homes", homes},
              {"schedules", schedules},
              {"writeConditions", static_cast<int>(writeConditions)},
              {"removeConditions", static_cast<int>(removeConditions)},
              {"lastTry", momentJson(lastTry)},
              {"lastSuccess", momentJson(lastSuccess)},
              {"failure", failure},
              {"failures", failures},
              {"notBefore", momentJson(notBefore)}};
  if (trouble) { object["trouble"] = nameOf(*trouble); }
  if (!etag.empty()) { object["etag"] = etag; }
  if (!lastModified.empty()) { object["lastModified"] = lastModified; }
  if (wishedInterval) { object["wishedInterval"] = wishedInterval->count(); }
  return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

Result<AccountState> AccountState::ofText(std::string_view text) {
  auto object = objectOf(text, "an account");
  if (!object) { return orlocal::failure(std::move(object.error())); }
  const JsonFields fields(*object);
  AccountState state;
  fields.read("principal", state.principal);
  fields.read("homes", state.homes);
  fields.read("schedules", state.schedules);
  fields.read("writeConditions", state.writeConditions);
  fields.read("removeConditions", state.removeConditions);
  fields.read("lastTry", state.lastTry);
  fields.read("lastSuccess", state.lastSuccess);
  fields.read("failure", state.failure);
  fields.read("trouble", state.trouble);
  fields.read("failures", state.failures);
  fields.read("notBefore", state.notBefore);
  fields.read("etag", state.etag);
  fields.read("lastModified", state.lastModified);
  fields.read("wishedInterval", state.wishedInterval);
  return state;
}

std::string MirrorState::text() const {
  json object{{"title", agreed.title}, {"order", agreed.order},      {"token", token},
              {"ctag", ctag},          {"asOf", momentJson(asOf)},   {"settled", settled},
              {"writable", writable},  {"rightsKnown", rightsKnown}, {"trouble", trouble}};
  if (agreed.color) { object["color"] = {agreed.color->red, agreed.color->green, agreed.color->blue}; }
  return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

Result<MirrorState> MirrorState::ofText(std::string_view text) {
  auto object = objectOf(text, "a calendar of an account");
  if (!object) { return failure(std::move(object.error())); }
  const JsonFields fields(*object);
  MirrorState state;
  fields.read("title", state.agreed.title);
  fields.read("order", state.agreed.order);
  std::vector<double> color;
  fields.read("color", color);
  if (color.size() == 3) { state.agreed.color = store::Rgb{color[0], color[1], color[2]}; }
  fields.read("token", state.token);
  fields.read("ctag", state.ctag);
  fields.read("asOf", state.asOf);
  fields.read("settled", state.settled);
  fields.read("writable", state.writable);
  fields.read("rightsKnown", state.rightsKnown);
  fields.read("trouble", state.trouble);
  return state;
}

}  // namespace orlocal::accounts
