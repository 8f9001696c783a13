#include "accounts/sync/account_state.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "base/translation.h"

namespace orlocal::accounts {
namespace {

using nlohmann::json;

constexpr std::string_view kKinds[] = {"caldav", "subscription"};

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

/// A state as a JSON object, field by field.
class Writer {
 public:
  template <class Value>
  void operator()(const char* name, const Value& value) {
    m_object[name] = jsonOf(value);
  }
  std::string text() const { return m_object.dump(-1, ' ', false, json::error_handler_t::replace); }

 private:
  template <class Value>
  static json jsonOf(const Value& value) {
    return value;
  }
  template <class Value>
  static json jsonOf(const std::optional<Value>& value) {
    return value ? jsonOf(*value) : json(nullptr);
  }
  static json jsonOf(const store::Moment& moment) { return moment.time_since_epoch().count(); }
  static json jsonOf(const std::chrono::seconds& seconds) { return seconds.count(); }
  static json jsonOf(const Keeps& keeps) { return static_cast<int>(keeps); }
  static json jsonOf(const store::Rgb& color) { return {color.red, color.green, color.blue}; }
  static json jsonOf(const AccountSettings::Kind& kind) { return kKinds[static_cast<std::size_t>(kind)]; }
  static json jsonOf(const Trouble& trouble) {
    return std::find_if(std::begin(kTroubleNames), std::end(kTroubleNames),
                        [&](const auto& row) { return row.trouble == trouble; })
        ->name;
  }

  json m_object = json::object();
};

/// The same back. What is missing, or is another program's idea of the field, stays as it is.
class Reader {
 public:
  explicit Reader(const json& object) : m_object(object) {}

  template <class Value>
  void operator()(const char* name, Value& value) const {
    const auto found = m_object.find(name);
    if (found == m_object.end() || found->is_null()) { return; }
    try {
      take(*found, value);
    } catch (const json::exception&) { return; }
  }

 private:
  template <class Value>
  static void take(const json& from, Value& value) {
    from.get_to(value);
  }
  template <class Value>
  static void take(const json& from, std::optional<Value>& value) {
    Value read{};
    take(from, read);
    value = read;
  }
  static void take(const json& from, store::Moment& moment) {
    moment = store::Moment(std::chrono::microseconds(from.get<std::int64_t>()));
  }
  static void take(const json& from, std::chrono::seconds& seconds) {
    seconds = std::chrono::seconds(from.get<std::int64_t>());
  }
  static void take(const json& from, Keeps& keeps) {
    if (const auto value = from.get<int>(); value >= 0 && value <= 2) { keeps = static_cast<Keeps>(value); }
  }
  static void take(const json& from, store::Rgb& color) {
    color = {from.at(0).get<double>(), from.at(1).get<double>(), from.at(2).get<double>()};
  }
  static void take(const json& from, AccountSettings::Kind& kind) {
    const auto* row = std::find(std::begin(kKinds), std::end(kKinds), from.get<std::string>());
    if (row != std::end(kKinds)) { kind = static_cast<AccountSettings::Kind>(row - std::begin(kKinds)); }
  }
  static void take(const json& from, Trouble& trouble) {
    const auto name = from.get<std::string>();
    for (const auto& row : kTroubleNames) {
      if (row.name == name) { trouble = row.trouble; }
    }
  }

  const json& m_object;
};

// Each field once, for both ways.

template <class Fields, class Settings>
void visitSettings(Fields& fields, Settings& settings) {
  fields("kind", settings.kind);
  fields("address", settings.address);
  fields("user", settings.user);
  fields("secret", settings.secret);
  fields("caFile", settings.caFile);
  fields("paused", settings.paused);
  fields("every", settings.every);
}

template <class Fields, class State>
void visitState(Fields& fields, State& state) {
  fields("principal", state.principal);
  fields("homes", state.homes);
  fields("schedules", state.schedules);
  fields("writeConditions", state.writeConditions);
  fields("removeConditions", state.removeConditions);
  fields("lastTry", state.lastTry);
  fields("lastSuccess", state.lastSuccess);
  fields("failure", state.failure);
  fields("trouble", state.trouble);
  fields("failures", state.failures);
  fields("notBefore", state.notBefore);
  fields("etag", state.etag);
  fields("lastModified", state.lastModified);
  fields("wishedInterval", state.wishedInterval);
}

template <class Fields, class State>
void visitMirror(Fields& fields, State& state) {
  fields("title", state.agreed.title);
  fields("color", state.agreed.color);
  fields("order", state.agreed.order);
  fields("token", state.token);
  fields("ctag", state.ctag);
  fields("asOf", state.asOf);
  fields("settled", state.settled);
  fields("unmade", state.unmade);
  fields("writable", state.writable);
  fields("rightsKnown", state.rightsKnown);
  fields("trouble", state.trouble);
}

template <class State>
std::string written(const State& state, void (*visit)(Writer&, const State&)) {
  Writer writer;
  visit(writer, state);
  return writer.text();
}

template <class State>
Result<State> readBack(std::string_view text, const std::string& what, void (*visit)(Reader&, State&)) {
  const json object = json::parse(text, nullptr, false);
  if (!object.is_object()) {
    return failure(
        ErrorCode::kCorrupt,
        tr("What the store keeps of {} is damaged; remove the account (orlocal account remove) and add it anew.",
           what));
  }
  State state;
  Reader reader(object);
  visit(reader, state);
  return state;
}

}  // namespace

std::string AccountSettings::text() const { return written<AccountSettings>(*this, visitSettings); }
Result<AccountSettings> AccountSettings::ofText(std::string_view text) {
  return readBack<AccountSettings>(text, tr("an account"), visitSettings);
}

std::string AccountState::text() const { return written<AccountState>(*this, visitState); }
Result<AccountState> AccountState::ofText(std::string_view text) {
  return readBack<AccountState>(text, tr("an account"), visitState);
}

std::string MirrorState::text() const { return written<MirrorState>(*this, visitMirror); }
Result<MirrorState> MirrorState::ofText(std::string_view text) {
  return readBack<MirrorState>(text, tr("a calendar of an account"), visitMirror);
}

}  // namespace orlocal::accounts
