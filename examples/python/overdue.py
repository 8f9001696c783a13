#!/usr/bin/env python3
"""Moves what is overdue to tomorrow. usage: overdue.py [STORE]"""
import sys

import orlocal

store = orlocal.Store(*sys.argv[1:2])
for reminder in store.run("reminders", overdue=True)["reminders"]:
    moved = store.edit(reminder["identifier"], start="tomorrow")
    print(f"{moved['title']}: due {reminder['due']} → {moved['due']}")
