#!/usr/bin/env python3
"""All scenarios on all servers, then the clients of other makes.

usage: all_servers.py --orlocal PROGRAM [NAME…]    names of servers, or "clients"; without one everything
"""
import argparse
import pathlib
import subprocess
import sys

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).parent
sys.path.insert(0, str(HERE))
import servers  # noqa: E402

CLIENTS = "clients"


def main():
    parser = argparse.ArgumentParser(description="All scenarios on all servers, then the clients of other makes.")
    parser.add_argument("--orlocal", required=True, help="the built program")
    parser.add_argument("names", nargs="*", metavar="NAME", help=f"{', '.join(servers.SERVERS)} or {CLIENTS}")
    options = parser.parse_args()
    known = [*servers.SERVERS, CLIENTS]
    unknown = [name for name in options.names if name not in known]
    if unknown:
        parser.error(f"no server {', '.join(unknown)}; there are {', '.join(known)}")
    failed = []
    for name in options.names or known:
        words = [HERE / "clients_test.py"] if name == CLIENTS else [HERE / "server_test.py", name]
        if subprocess.run([sys.executable, *map(str, words), "--orlocal", options.orlocal], check=False).returncode != 0:
            failed.append(name)
    print(f"failed: {', '.join(failed)}" if failed else "everything went well")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
