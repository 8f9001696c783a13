"""Tables of what was measured with many clients."""
import statistics
import subprocess

PACKAGES = {"radicale": ("Radicale", "radicale"), "cyrus": ("Cyrus", "cyrus-imapd")}
KINDS = {"quiet": "nothing new", "received": "an event was changed elsewhere", "sent": "an event was changed here"}


def version(name):
    asked = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", PACKAGES[name][1]], capture_output=True, text=True,
                           check=False)
    return asked.stdout or "unknown"


def time_text(seconds):
    if seconds >= 1:
        return f"{seconds:.1f} s"
    return f"{seconds * 1e3:.0f} ms" if seconds >= 0.01 else f"{seconds * 1e3:.1f} ms"


def table(head, rows):
    yield f"| {' | '.join(head)} |"
    yield "|---" * len(head) + "|"
    for row in rows:
        yield f"| {' | '.join(map(str, row))} |"
    yield ""


def fell_behind(step):
    """Whether the syncs that were due took so much longer than they were due that the rest must be a queue."""
    late = step["ours"]["seconds"] - step["due"]
    return late > max(2, 0.1 * step["due"]) or step["ours"]["failed"] > 0


def median_of(rounds, side, what):
    return statistics.median(one[side][what] for one in rounds)


def mean_of(rounds, side, what):
    return statistics.mean(one[side][what] for one in rounds)


def ratio_of(rounds, what="median"):
    return statistics.median(one["ours"][what] / one["floor"][what] for one in rounds)


def one_sync(bursts):
    for burst in bursts:
        rounds = burst["rounds"]
        yield (KINDS[burst["kind"]], " ".join(rounds[-1]["ours"]["methods"]),
               f"{median_of(rounds, 'floor', 'bytesSent'):,.0f}", f"{median_of(rounds, 'floor', 'bytesReceived'):,.0f}",
               time_text(median_of(rounds, "ours", "median")), time_text(median_of(rounds, "floor", "median")),
               f"{ratio_of(rounds):.2f}", time_text(mean_of(rounds, "ours", "serverProcessor")),
               time_text(mean_of(rounds, "ours", "ownProcessor")))


def at_once(bursts):
    for burst in bursts:
        rounds = burst["rounds"]
        clients = burst["clients"]
        yield (f"{clients:,}", KINDS[burst["kind"]], f"{median_of(rounds, 'ours', 'requests') / clients:.1f}",
               time_text(median_of(rounds, "ours", "seconds")),
               f"{clients / median_of(rounds, 'ours', 'seconds'):.0f}", time_text(median_of(rounds, "floor", "seconds")),
               f"{ratio_of(rounds, 'seconds'):.2f}", time_text(mean_of(rounds, "ours", "serverProcessor") / clients),
               time_text(mean_of(rounds, "ours", "ownProcessor") / clients))


def steps(found):
    for step in found:
        ours = step["ours"]
        kinds = ", ".join(f"{ours['kinds'][kind]['count']:,}" for kind in KINDS)
        yield (f"{step['clients']:,}", f"{step['perMinute']:,.0f}" + (" (fell behind)" if fell_behind(step) else ""),
               f"{ours['count'] / ours['seconds']:.1f}", f"{ours['requests'] / ours['seconds']:.1f}", kinds,
               time_text(ours["median"]), time_text(ours["p95"]), time_text(ours["p99"]), time_text(ours["lateMost"]),
               f"{ours['serverProcessor'] / ours['seconds']:.2f}", f"{ours['ownProcessor'] / ours['seconds']:.2f}",
               f"{step['serverMebibytes']:.0f}", ours["failed"])


def first(found):
    for each in found:
        both = each["both"]
        yield (f"{each['events']:,}", time_text(median_of(both, "ours", "seconds")),
               time_text(median_of(both, "floor", "seconds")), f"{ratio_of(both, 'seconds'):.2f}",
               time_text(median_of(both, "ours", "serverProcessor")), time_text(median_of(both, "ours", "ownProcessor")),
               f"{each['alone']['ours']['peakMebibytes']:.1f} MiB", f"{each['alone']['storeBytes'] / 2**20:.1f} MiB",
               each["alone"]["ours"]["requests"],
               time_text(median_of(each["quiet"]["rounds"], "ours", "median")),
               time_text(median_of(each["received"]["rounds"], "ours", "median")))


STEPS = ("clients", "syncs due a minute", "done a second", "requests a second", "nothing new, received, sent", "median", "95 %",
         "99 %", "latest start", "server's processors", "ours", "server's MiB", "failed")


def put(page, lines):
    """Between the marks of the page."""
    begin, end = "<!-- results begin -->", "<!-- results end -->"
    text = page.read_text() if page.exists() else f"{begin}\n{end}\n"
    page.write_text(f"{text.split(begin)[0]}{begin}\n{lines}\n{end}{text.split(end)[1]}")


def report(results):
    size = results["size"]
    yield f"Measured on {results['date']}, on {results['threads']} hardware threads."
    yield ""
    for name, found in results["servers"].items():
        yield f"### {PACKAGES[name][0]} {found['version']}"
        yield ""
        yield f"One client alone, a calendar of {size['events']} events; medians of {size['rounds']} rounds:"
        yield ""
        yield from table(("a sync where", "requests", "bytes sent", "bytes received", "takes", "the same requests, plain", "ratio",
                          "server's processor", "ours"), one_sync(found["one"]))
        joining = found["joining"]
        yield (f"{joining['clients']:,} clients that come for the first time: {joining['ours']['seconds']:.0f} s, "
               f"{joining['clients'] / joining['ours']['seconds']:.1f} a second; the server's processor "
               f"{time_text(joining['ours']['serverProcessor'] / max(1, joining['clients']))} for each, ours "
               f"{time_text(joining['ours']['ownProcessor'] / max(1, joining['clients']))}; stores of "
               f"{joining['storeBytes'] / max(1, joining['clients']) / 1024:.0f} KiB, "
               f"{joining['ours']['peakMebibytes']:.0f} MiB of memory for all of them.")
        yield ""
        yield "All at once:"
        yield ""
        yield from table(("clients", "a sync where", "requests of each", "takes", "syncs a second", "the same requests, plain", "ratio", "server's processor, each",
                          "ours"), at_once(found["bursts"]))
        yield f"Users with a calendar of {size['events']} events each, polling:"
        yield ""
        yield from table(STEPS, steps(found["steps"]))
        yield f"A team with one calendar of {size['team_events']} events, polling:"
        yield ""
        yield from table(STEPS, steps(found["team"]))
        yield "The first sync of a calendar, and then:"
        yield ""
        yield from table(("events", "takes", "the same requests, plain", "ratio", "server's processor", "ours", "peak memory",
                          "store", "requests", "nothing new", "an event changed"), first(found["first"]))
