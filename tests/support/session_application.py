"""An application on the session's bus: session_application.py IDENTIFIER KIND

  quits    has a "quit" action, and quits on it
  ignores  has one that does nothing
  lacks    has other actions only
  plain    has no list of actions, and quits on the activation of "quit"
  busy     owns its name and never answers
  files    is the file manager, without an action
  manager  is the file manager, and quits on its "quit" action
"""

import os
import signal
import sys

from gi.repository import Gio, GLib

APPLICATION = """<node><interface name="org.freedesktop.Application"><method name="ActivateAction">
<arg type="s" direction="in"/><arg type="av" direction="in"/><arg type="a{sv}" direction="in"/>
</method></interface></node>"""

FILE_MANAGER = "org.freedesktop.FileManager1"
identifier, kind = sys.argv[1:]
loop = GLib.MainLoop()


def is_ready(*_):
    print("ready", flush=True)
    return GLib.SOURCE_REMOVE


def run_gio_application():
    application = Gio.Application(application_id=identifier, flags=Gio.ApplicationFlags.IS_SERVICE)
    action = Gio.SimpleAction.new("other" if kind == "lacks" else "quit", None)
    if kind == "manager":
        Gio.bus_own_name(Gio.BusType.SESSION, FILE_MANAGER, Gio.BusNameOwnerFlags.NONE, None, None, None)
    if kind in ("quits", "manager"):
        action.connect("activate", lambda *_: application.quit())
    application.add_action(action)
    application.hold()
    GLib.idle_add(is_ready)
    application.run([])


def run_plain_application():
    def on_call(connection, sender, path, interface, method, arguments, invocation):
        invocation.return_value(None)
        if arguments.unpack()[0] == "quit":
            connection.flush_sync(None)
            loop.quit()

    def on_bus(connection, name):
        interface = Gio.DBusNodeInfo.new_for_xml(APPLICATION).interfaces[0]
        connection.register_object("/" + identifier.replace(".", "/").replace("-", "_"), interface, on_call, None, None)

    Gio.bus_own_name(Gio.BusType.SESSION, identifier, Gio.BusNameOwnerFlags.NONE, on_bus, is_ready, None)
    loop.run()


def own_name(name):
    Gio.bus_own_name(Gio.BusType.SESSION, name, Gio.BusNameOwnerFlags.NONE, None, lambda *_: loop.quit(), None)
    loop.run()
    is_ready()


if kind == "plain":
    run_plain_application()
elif kind == "busy":
    own_name(identifier)
    os.kill(os.getpid(), signal.SIGSTOP)  # all threads, for the bus library answers on one of its own
elif kind == "files":
    own_name(FILE_MANAGER)
    loop.run()
else:
    run_gio_application()
