"""Which tests are near a folder of src/: the first to be asked when something in it was changed.

Each stage is built and run when the stages before it noticed nothing. Programs are named as CTest knows them; behind a colon
stands the folder of tests whose cases alone are run. Transcripts are globs below tests/transcripts/.
"""
import dataclasses


@dataclasses.dataclass(frozen=True)
class Programs:
    names: tuple


@dataclasses.dataclass(frozen=True)
class Transcripts:
    patterns: tuple


def programs(*names):
    return Programs(names)


SOLUTIONS = Transcripts(("eventkit/*.txt", "legacy/*.txt", "notify/*.txt"))
PEOPLE = Transcripts(("commands/*.txt",))

# The longest folder that fits counts.
NEARBY = {
    "src/bridge": (programs("bridge_test"), programs("functions_test", "notify_test"), SOLUTIONS),
    "src/functions": (programs("functions_test"), SOLUTIONS),
    "src/backend": (programs("backend_shared_test"), programs("backend_eventkit_test"), programs("backend_legacy_test"),
                    programs("bridge_test", "functions_test"), SOLUTIONS),
    "src/backend/eventkit": (programs("backend_eventkit_test"), programs("backend_shared_test", "functions_test"), SOLUTIONS),
    "src/backend/legacy": (programs("backend_legacy_test"), programs("backend_shared_test", "functions_test"), SOLUTIONS),
    "src/notify": (programs("notify_test"), SOLUTIONS),
    "src/platform": (programs("platform_contract_test", "platform_linux_values_test", "platform_linux_store_test"),
                     programs("platform_linux_log_test", "platform_linux_strings_test", "platform_linux_threads_test"),
                     programs("bridge_test", "functions_test"), SOLUTIONS),
    "src/store": (programs("store_test"), SOLUTIONS, PEOPLE),
    "src/store/time": (programs("store_time_test"), programs("store_recurrence_test", "store_test"), SOLUTIONS, PEOPLE),
    "src/store/recurrence": (programs("store_recurrence_test"), programs("store_test"), SOLUTIONS, PEOPLE),
    "src/store/icalendar": (programs("store_icalendar_test"), programs("store_test"), SOLUTIONS, PEOPLE),
    "src/store/edits": (programs("store_test:tests/store/edits"), programs("store_test"), SOLUTIONS, PEOPLE),
    "src/accounts": (programs("accounts_test", "accounts_sync_test", "accounts_face_test"),
                     programs("accounts_transport_test", "host_account_commands_test")),
    "src/host": (programs("host_commands_test", "host_console_test", "plugin_test", "host_language_test"), PEOPLE,
                 SOLUTIONS),
    "src/host/calc": (programs("host_calc_test"), SOLUTIONS),
    "src/host/commands": (programs("host_store_commands_test", "host_change_commands_test", "host_words_test"),
                          programs("host_commands_test", "host_transfer_test", "host_care_test", "host_availability_test"),
                          PEOPLE),
    "src/base": (programs("base_test"), programs("store_test"), PEOPLE),
}


def stages_for(file):
    """The stages for a source, the nearest first; none where the table has no tests for it."""
    fitting = [folder for folder in NEARBY if file.startswith(folder + "/")]
    return NEARBY[max(fitting, key=len)] if fitting else ()
