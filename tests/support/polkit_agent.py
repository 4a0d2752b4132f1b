"""A password dialog without a window: polkit_agent.py ANSWER PROCESS [LANGUAGE]

It serves what the process asks for, prints "asked" each time, and answers at once:

  dismiss   the user closes the dialog
  allow     the user knows the password; a helper program of root's confirms it

With a language it also prints what the dialog is for, and in that language what it says.
"""

import sys

from gi.repository import Gio, GLib

INTERFACE = """<node><interface name="org.freedesktop.PolicyKit1.AuthenticationAgent">
<method name="BeginAuthentication"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
<arg type="a{ss}" direction="in"/><arg type="s" direction="in"/><arg type="a(sa{sv})" direction="in"/></method>
<method name="CancelAuthentication"><arg type="s" direction="in"/></method></interface></node>"""
PATH = "/org/freedesktop/PolicyKit1/AuthenticationAgent"

answer, process, language = sys.argv[1], int(sys.argv[2]), (sys.argv[3:] or [""])[0]
bus = Gio.bus_get_sync(Gio.BusType.SYSTEM, None)


def on_call(connection, sender, path, interface, method, arguments, invocation):
    if method != "BeginAuthentication":
        invocation.return_value(None)
        return
    print("asked", flush=True)
    if language:
        print(*arguments.unpack()[:2], sep="\n", flush=True)
    if answer == "dismiss":
        invocation.return_dbus_error("org.freedesktop.PolicyKit1.Error.Cancelled", "dismissed")
    else:
        print(arguments.unpack()[4], flush=True)  # the cookie, for whoever confirms the password
        sys.stdin.readline()
        invocation.return_value(None)


bus.register_object(PATH, Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0], on_call, None, None)
with open(f"/proc/{process}/stat") as file:
    start_time = int(file.read().rsplit(")", 1)[1].split()[19])
subject = ("unix-process", {"pid": GLib.Variant("u", process), "start-time": GLib.Variant("t", start_time)})
bus.call_sync("org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority", "org.freedesktop.PolicyKit1.Authority",
              "RegisterAuthenticationAgent", GLib.Variant("((sa{sv})ss)", (subject, language or "C", PATH)), None, 0, 5000, None)
print("ready", flush=True)
GLib.MainLoop().run()
