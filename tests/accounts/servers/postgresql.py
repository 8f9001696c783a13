"""A database server of its own for a calendar server that wants one."""
import glob
import pathlib
import shutil
import time


class PostgreSql:
    """A database server of its own, on a socket in the folder."""

    def __init__(self, server, port=5432):
        self.server = server
        self.port = port
        self.folder = server.folder / "pg"
        self.programs = pathlib.Path(sorted(glob.glob("/usr/lib/postgresql/*/bin"))[-1])

    def start(self):
        self.folder.mkdir()
        shutil.chown(self.folder, "postgres")
        self.user(self.programs / "initdb", "-A", "trust", "-D", self.folder / "data")
        self.server.go(*self.words(self.programs / "postgres", "-D", self.folder / "data", "-k", self.folder,
                                   "-p", self.port, "-c", "listen_addresses=127.0.0.1" if self.port != 5432 else
                                   "listen_addresses=", "-c", "fsync=off"), cwd=self.folder)
        until = time.monotonic() + 30
        while True:
            try:
                return self.sql("postgres", "select 1")
            except RuntimeError:
                if time.monotonic() > until:
                    raise
                time.sleep(0.05)

    def words(self, *words):
        return ("runuser", "-u", "postgres", "--", "env", f"PGHOST={self.folder}", f"PGPORT={self.port}", *words)

    def user(self, *words):
        return self.server.run(*self.words(*words), cwd=self.folder)

    def sql(self, database, text):
        return self.user("psql", "-qAt", "-v", "ON_ERROR_STOP=1", database, "-c", text)
