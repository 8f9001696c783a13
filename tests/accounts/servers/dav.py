"""What another client does: puts, reads and removes things on a server, without Orlocal."""
import http.client
import re
import urllib.error
import urllib.request
import xml.etree.ElementTree as ElementTree

import servers

NAMES = {"d": "DAV:", "c": "urn:ietf:params:xml:ns:caldav", "a": "http://apple.com/ns/ical/"}
DECLARED = 'xmlns:D="DAV:" xmlns:C="urn:ietf:params:xml:ns:caldav" xmlns:A="http://apple.com/ns/ical/"'


class Refused(Exception):
    def __init__(self, method, path, status, body):
        super().__init__(f"{method} {path}: {status}\n{body[:500]}")
        self.status = status


class Client:
    """A user's client. Paths are decoded only where said."""

    def __init__(self, server, user="alice"):
        self.server = server
        self.user = user
        words = urllib.request.HTTPPasswordMgrWithDefaultRealm()
        words.add_password(None, server.origin, user, servers.PASSWORD)
        self.opener = urllib.request.build_opener(urllib.request.HTTPBasicAuthHandler(words),
                                                  urllib.request.HTTPDigestAuthHandler(words))

    @property
    def home(self):
        return self.server.home.format(user=self.user)

    def ask(self, method, path, body=None, headers=None):
        """Answers the body."""
        kind = "text/calendar" if method == "PUT" else "application/xml"
        request = urllib.request.Request(self.server.origin + path, method=method,
                                         data=body.encode() if body is not None else None)
        request.add_header("Content-Type", kind + "; charset=utf-8")
        for name, value in (headers or {}).items():
            request.add_header(name, value)
        try:
            with self.opener.open(request, timeout=60) as response:
                status, text = response.status, response.read().decode()
        except urllib.error.HTTPError as error:
            raise Refused(method, path, error.code, error.read().decode(errors="replace")) from None
        except http.client.HTTPException as error:
            raise Refused(method, path, 0, repr(error)) from None
        if status == 207 and method in ("PUT", "MKCALENDAR"):
            raise Refused(method, path, status, text)
        return text

    def calendars(self):
        """Address to displayname and colour, of the home's calendars."""
        text = self.ask("PROPFIND", self.home, f"<D:propfind {DECLARED}><D:prop><D:resourcetype/><D:displayname/>"
                        "<A:calendar-color/></D:prop></D:propfind>", {"Depth": "1"})
        found = {}
        for response in ElementTree.fromstring(text).findall("d:response", NAMES):
            if response.find(".//d:resourcetype/c:calendar", NAMES) is not None:
                href = re.sub("^https?://[^/]*", "", response.findtext("d:href", namespaces=NAMES).strip())
                found[href] = (response.findtext(".//d:displayname", "", NAMES),
                               response.findtext(".//a:calendar-color", "", NAMES))
        return found

    def calendar_titled(self, title):
        """Its address; none when no calendar, or more than one, has that title."""
        found = [path for path, (name, _) in self.calendars().items() if name == title]
        return found[0] if len(found) == 1 else None

    def make_calendar(self, name, title=None):
        path = f"{self.home}{name}/"
        self.ask("MKCALENDAR", path, f"<C:mkcalendar {DECLARED}><D:set><D:prop><D:displayname>{title or name}"
                 "</D:displayname></D:prop></D:set></C:mkcalendar>")
        return path

    def set_property(self, path, element):
        self.ask("PROPPATCH", path, f"<D:propertyupdate {DECLARED}><D:set><D:prop>{element}</D:prop></D:set>"
                 "</D:propertyupdate>")

    def put(self, path, text):
        self.ask("PUT", path, text)

    def get(self, path):
        return self.ask("GET", path)

    def remove(self, path):
        self.ask("DELETE", path)

    def items(self, calendar):
        """Address to text, of all that the calendar holds."""
        text = self.ask("PROPFIND", calendar, f"<D:propfind {DECLARED}><D:prop><D:resourcetype/><D:getetag/></D:prop>"
                        "</D:propfind>", {"Depth": "1"})
        found = {}
        for response in ElementTree.fromstring(text).findall("d:response", NAMES):
            href = re.sub("^https?://[^/]*", "", response.findtext("d:href", namespaces=NAMES).strip())
            if response.find(".//d:resourcetype/d:collection", NAMES) is None and href.rstrip("/") != calendar.rstrip("/"):
                found[href] = self.get(href)
        return found


def calendar_text(*components):
    """Components as a server wants them."""
    text = "BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//Another//Client//EN\n" + "".join(components) + "END:VCALENDAR\n"
    return text.replace("\n", "\r\n")


def event(uid, title, start="20261201T120000Z", end="20261201T130000Z", more=""):
    return (f"BEGIN:VEVENT\nUID:{uid}\nDTSTAMP:20261101T000000Z\nDTSTART:{start}\nDTEND:{end}\nSUMMARY:{title}\n"
            f"{more}END:VEVENT\n")


def task(uid, title, more=""):
    return f"BEGIN:VTODO\nUID:{uid}\nDTSTAMP:20261101T000000Z\nSUMMARY:{title}\n{more}END:VTODO\n"


def unfolded(text):
    """The lines of a calendar text."""
    return re.sub("\r?\n[ \t]", "", text).splitlines()
