"""Looks at the windows of a program and works them as an assistive program does, through the accessibility tree.

Each line of standard input is a request, a JSON list, and has a line of standard output as its answer, a JSON object with
either "answer" or "error":

    ["tree", PID]                  the objects of the process as one JSON document; null while it shows none
    ["press", PID, ROLE, NAME]     does the first action of the only object of that role and name

It needs the user's own session bus, so it is a program: the tests, which are root, run it as the user by way of
desktop.py. It is made for the system's own Python, the one that the packages of the accessibility library serve.
"""

import json
import os
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402 - only now is the version settled

RENAMED = {"button": "push button"}  # by newer releases of the library; requests and answers have the older name
DEPTH = 64  # a tree that is deeper than this is taken to go in circles


def application(pid):
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        child = desktop.get_child_at_index(index)
        if child is not None and child.get_process_id() == pid:
            return child
    return None


def children(accessible):
    found = (accessible.get_child_at_index(index) for index in range(accessible.get_child_count()))
    return [child for child in found if child is not None]


def role_of(accessible):
    name = accessible.get_role_name()
    return RENAMED.get(name, name)


def value(accessible):
    """What a progress bar or a slider stands at, and its two ends."""
    range_ = accessible.get_value_iface()
    if range_ is None:
        return None
    return [range_.get_current_value(), range_.get_minimum_value(), range_.get_maximum_value()]


def description(accessible, depth=DEPTH):
    actions = accessible.get_action_iface()
    return {
        "role": role_of(accessible),
        "name": accessible.get_name(),
        "description": accessible.get_description(),
        "states": sorted(state.value_nick for state in accessible.get_state_set().get_states()),
        "actions": [actions.get_action_name(index) for index in range(actions.get_n_actions())] if actions else [],
        "value": value(accessible),
        "children": [description(child, depth - 1) for child in children(accessible)] if depth > 0 else [],
    }


def all_of(accessible, depth=DEPTH):
    yield accessible
    if depth > 0:
        for child in children(accessible):
            yield from all_of(child, depth - 1)


def tree(pid):
    try:
        root = application(pid)
        return description(root) if root is not None and root.get_child_count() > 0 else None
    except GLib.Error:  # a window came or went meanwhile: nothing that could be relied on
        return None


def press(pid, role, name):
    root = application(pid)
    found = [] if root is None else [one for one in all_of(root) if (role_of(one), one.get_name()) == (role, name)]
    if len(found) != 1:
        raise LookupError(f'process {pid} has {len(found)} objects of the role "{role}" named "{name}"')
    actions = found[0].get_action_iface()
    if actions is None or actions.get_n_actions() == 0:
        raise LookupError(f'the {role} "{name}" has no action')
    if not actions.do_action(0):
        raise LookupError(f'the {role} "{name}" refused to be pressed')


def answer(command, *arguments):
    try:
        Atspi.set_timeout(5000, 5000)  # ms, for one answer of the program
        Atspi.init()
        told = {"answer": {"tree": tree, "press": press}[command](*arguments)}
    except Exception as error:
        told = {"error": str(error)}
    print(json.dumps(told), flush=True)


for line in sys.stdin:
    # The library remembers what it has seen, so each request has a process of its own, which has seen nothing.
    child = os.fork()
    if child == 0:
        answer(*json.loads(line))
        os._exit(0)
    os.waitpid(child, 0)
