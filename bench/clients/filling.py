"""Puts calendars on servers, by the shortest way that each has."""
import base64
import concurrent.futures
import http.client
import os
import subprocess

import dav

CALENDAR = "calendar/"


def ask(server, user, method, path, text):
    words = base64.b64encode(f"{user}:{dav.servers.PASSWORD}".encode()).decode()
    line = http.client.HTTPConnection("127.0.0.1", server.port, timeout=600)
    line.request(method, path, text, {"Authorization": f"Basic {words}", "Content-Type": "text/calendar; charset=utf-8"})
    answer = line.getresponse()
    body = answer.read()
    line.close()
    if answer.status not in (200, 201, 207):
        raise RuntimeError(f"{method} {path}: {answer.status} {body[:300]!r}")


def fill_radicale(server, users, text):
    """A whole calendar is taken by one PUT. All further ones are copies of its folder, with what the server worked out
    of it: items are never written in place, so links do."""
    first = users[0]
    ask(server, first, "PUT", server.home.format(user=first) + CALENDAR, text)
    client = dav.Client(server, first)
    client.ask("PROPFIND", client.home + CALENDAR, f"<D:propfind {dav.DECLARED}><D:prop><D:sync-token/></D:prop></D:propfind>",
               {"Depth": "0"})
    root = server.folder / "collections" / "collection-root"
    for user in users[1:]:
        os.makedirs(root / user)
        subprocess.run(["cp", "-rl", root / first / CALENDAR, root / user / CALENDAR], check=True)


def fill_cyrus(server, users, text):
    """A whole calendar is taken by one POST to one that is there."""
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        for filled in [pool.submit(ask, server, user, "POST", server.home.format(user=user) + "Default/", text)
                       for user in users]:
            filled.result()


FILL = {"radicale": fill_radicale, "cyrus": fill_cyrus}
