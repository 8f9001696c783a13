"""Finding an account, signing in, and what one may do."""
import dav
import servers
from machine import Failed, Machine
from scenario import Skipped, Unexpected, expect, expect_that, scenario


@scenario("root, principal, home and a calendar's address lead to the same account")
def discovery(bench):
    path, machine = bench.team(count=1)
    titles = machine.titles_of_calendars()
    expect_that("Team" in titles, f"the account that the root leads to has the calendar: {titles}")
    for what, address in (("principal", bench.server.principal.format(user="alice")), ("home", bench.alice.home),
                          ("calendar", path)):
        found = bench.machine(bench.address(address))
        expect(found.titles_of_calendars(), titles, f"calendars of the account that the {what} leads to")


@scenario("a wrong password is said once, without the password")
def password(bench):
    if not bench.server.asks_password:
        raise Skipped(bench.server.cannot["password"])
    machine = Machine(bench.program, bench.folder / "stranger")
    machine.set_password("wrong-word-7")
    status, out, err = machine.tell("account", "add", bench.address(), "--user", "alice", "--password-file",
                                    machine.password_file, "--name", "Work")
    expect(status, 1, f"status of account add: {out}{err}")
    expect(machine.json("account", "list"), [], "accounts after a wrong password")
    expect_that("wrong-word-7" not in out + err, f"the password is not said: {out}{err}")
    # The password changed later.
    machine.set_password(servers.PASSWORD)
    machine.add_account(bench.address())
    machine.sync()
    machine.set_password("wrong-word-7")
    status, out, err = machine.tell("sync")
    expect(status, 1, "status of a sync with a wrong password")
    expect_that("wrong-word-7" not in out + err, f"the password is not said: {out}{err}")
    expect((out + err).count("(401)"), 1, f"how often it is said: {out}{err}")
    shown = machine.tell("account", "show", "Work")[1] + machine.tell("account", "list")[1]
    expect_that("wrong-word-7" not in shown, f"the password is not shown: {shown}")


def share(bench):
    """A calendar of alice's that is in bob's home, who may read it; its address for her."""
    name = bench.server.name
    bob = dav.Client(bench.server, "bob")
    bob.calendars()  # his first visit makes his home
    if name == "radicale":
        path = "/bob/shared/"
        bench.alice.ask("MKCALENDAR", path, f"<C:mkcalendar {dav.DECLARED}><D:set><D:prop><D:displayname>Shared"
                        "</D:displayname></D:prop></D:set></C:mkcalendar>")
        return path
    path = bench.calendar("Shared")
    if name == "cyrus":
        mailbox = f"user.alice.#calendars.{path.rstrip('/').split('/')[-1]}"
        bench.server.imap("alice", f'SETACL "{mailbox}" bob lrs')
        bench.server.imap("bob", f'SUBSCRIBE "{mailbox}"')
    elif name == "sogo":
        inverse = 'xmlns="urn:inverse:params:xml:ns:inverse-dav"'
        bench.alice.ask("POST", path, f'<acl-query {inverse}><add-user user="bob"/></acl-query>')
        bench.alice.ask("POST", path, f'<acl-query {inverse}><set-roles user="bob"><PublicViewer/><PrivateViewer/>'
                        '<ConfidentialViewer/></set-roles></acl-query>')
        bob.ask("POST", path, f"<subscribe {inverse}/>")
    elif name == "davical":
        bench.server.share(path.removeprefix("/caldav.php"))
    return path


@scenario("a calendar that is shared to be read comes in, and takes no changes")
def read_only(bench):
    if "read_only" in bench.server.cannot:
        raise Skipped(bench.server.cannot["read_only"])
    path = share(bench)
    bench.alice.put(path + "talk.ics", dav.calendar_text(dav.event("talk", "Talk")))
    machine = bench.machine(user="bob")
    talk = [("2026-12-01 13:00:00", "Talk")]

    def shared():
        found = [each for each in machine.json("calendars") if "hared" in each["title"]]
        expect(len(found), 1, "shared calendars")
        return found[0]["title"], found[0]["readOnly"]

    title, known = shared()
    expect(machine.events(title), talk, "its events")
    if known:
        try:
            machine.change_event(title, "Talk", title="Silence")
            raise Unexpected("a calendar that may only be read takes a change")
        except Failed:
            pass
    else:
        bench.note("the server does not say beforehand that it may only be read")
        machine.change_event(title, "Talk", title="Silence")
        status, out, err = machine.tell("--json", "sync")
        expect(status, 1, f"status of a sync with a change that is not allowed: {out}{err}")
        expect([each["fields"] for each in machine.conflicts()], [["not allowed"]], "what orlocal conflicts lists")
        expect(shared()[1], True, "it may only be read")
    expect(machine.sync()["sent"], 0, "what is sent later")
    expect(machine.events(title), talk, "its events after that")
    expect_that("SUMMARY:Talk" in bench.alice.get(path + "talk.ics"), "the server has what alice wrote")
    bench.alice.remove(path)
