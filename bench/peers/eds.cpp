#include <algorithm>
#include <set>
#include <stdexcept>

#include <libecal/libecal.h>
#include <unistd.h>

#include "tasks.h"

namespace peers {
namespace {

/// Do not wait: a local calendar is never "connected".
constexpr guint32 kSecondsToConnect = static_cast<guint32>(-1);

/// Throws what a call reports.
class Failure {
 public:
  ~Failure() { g_clear_error(&m_error); }
  GError** operator&() { return &m_error; }
  void check() const {
    if (m_error != nullptr) { throw std::runtime_error(m_error->message); }
  }

 private:
  GError* m_error = nullptr;
};

/// The built-in local calendar of Evolution Data Server; its processes are started over the session's D-Bus.
class DataServer : public Library {
 public:
  ~DataServer() override {
    g_clear_object(&m_client);
    g_clear_object(&m_registry);
  }

  void import(const std::filesystem::path& file) override {
    open();
    // What Evolution's own import does with a file.
    ICalComponent* calendar = e_cal_util_parse_ics_string(textOf(file).c_str());
    i_cal_component_set_method(calendar, I_CAL_METHOD_PUBLISH);
    Failure failure;
    e_cal_client_receive_objects_sync(m_client, calendar, E_CAL_OPERATION_FLAG_NONE, nullptr, &failure);
    g_object_unref(calendar);
    failure.check();
  }

  void open() override {
    Failure failure;
    m_registry = e_source_registry_new_sync(nullptr, &failure);
    failure.check();
    ESource* source = e_source_registry_ref_builtin_calendar(m_registry);
    EClient* client =
        e_cal_client_connect_sync(source, E_CAL_CLIENT_SOURCE_TYPE_EVENTS, kSecondsToConnect, nullptr, &failure);
    g_object_unref(source);
    failure.check();
    m_client = E_CAL_CLIENT(client);
    e_cal_client_set_default_timezone(m_client, i_cal_timezone_get_builtin_timezone("Europe/Berlin"));
  }

  std::vector<Entry> between(std::int64_t from, std::int64_t to) override {
    std::vector<Entry> entries;
    e_cal_client_generate_instances_sync(m_client, from, to, nullptr, take, &entries);
    // It counts what ends where the range begins.
    entries.erase(std::remove_if(entries.begin(), entries.end(), [=](const Entry& each) { return each.end <= from; }),
                  entries.end());
    return entries;
  }

  void add(const std::string& uid, std::int64_t start) override {
    ICalTimezone* utc = i_cal_timezone_get_utc_timezone();
    ICalComponent* event = i_cal_component_new_vevent();
    i_cal_component_set_uid(event, uid.c_str());
    i_cal_component_set_summary(event, "Added");
    ICalTime* from = i_cal_time_new_from_timet_with_zone(start, FALSE, utc);
    ICalTime* to = i_cal_time_new_from_timet_with_zone(start + 3600, FALSE, utc);
    i_cal_component_set_dtstart(event, from);
    i_cal_component_set_dtend(event, to);
    Failure failure;
    e_cal_client_create_object_sync(m_client, event, E_CAL_OPERATION_FLAG_NONE, nullptr, nullptr, &failure);
    g_object_unref(from);
    g_object_unref(to);
    g_object_unref(event);
    failure.check();
  }

  /// Of all others on the private D-Bus: the registry and the calendar's server and its helper.
  double peakOfServants() override {
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    GVariant* answer = ask(bus, "ListNames", nullptr);
    std::set<guint32> processes;
    GVariantIter* names = nullptr;
    g_variant_get(answer, "(as)", &names);
    for (const char* name = nullptr; g_variant_iter_next(names, "&s", &name);) {
      if (GVariant* process = ask(bus, "GetConnectionUnixProcessID", g_variant_new("(s)", name))) {
        guint32 id = 0;
        g_variant_get(process, "(u)", &id);
        processes.insert(id);
        g_variant_unref(process);
      }
    }
    g_variant_iter_free(names);
    g_variant_unref(answer);
    g_object_unref(bus);
    processes.erase(static_cast<guint32>(getpid()));
    double sum = 0;
    for (const guint32 id : processes) { sum += peakOf(std::to_string(id)); }
    return sum;
  }

 private:
  static GVariant* ask(GDBusConnection* bus, const char* question, GVariant* argument) {
    return g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                       question, argument, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
  }

  static std::int64_t seconds(ICalTime* time) {
    ICalTimezone* zone = i_cal_time_get_timezone(time);
    return i_cal_time_as_timet_with_zone(time,
                                         zone != nullptr ? zone : i_cal_timezone_get_builtin_timezone("Europe/Berlin"));
  }
  static gboolean take(ICalComponent* event, ICalTime* start, ICalTime* end, void* entries, GCancellable*, GError**) {
    const char* title = i_cal_component_get_summary(event);
    static_cast<std::vector<Entry>*>(entries)->push_back({seconds(start), seconds(end), title != nullptr ? title : ""});
    return TRUE;
  }

  ESourceRegistry* m_registry = nullptr;
  ECalClient* m_client = nullptr;
};

}  // namespace

std::unique_ptr<Library> makeLibrary(const std::filesystem::path&) { return std::make_unique<DataServer>(); }

}  // namespace peers
