"""A whole run by an assistive tool alone, over the accessibility bus: no key and no pointer. Run on an X server, with
the system's Python, which has the bus's module.
  accessible_run.py HOST SAMPLE-MAKER"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

host, samples = map(pathlib.Path, sys.argv[1:])
if not shutil.which("dbus-run-session") or not pathlib.Path("/usr/libexec/at-spi-bus-launcher").exists():
    print("skipped: needs dbus and at-spi2-core")
    sys.exit(77)
try:
    import dbus.bus
    import dbus.lowlevel
except ImportError:
    print("skipped: needs python3-dbus")
    sys.exit(77)
if "DBUS_SESSION_BUS_ADDRESS" not in os.environ or "PARTKEEP_OWN_BUS" not in os.environ:
    os.environ["PARTKEEP_OWN_BUS"] = "1"  # nobody's session hears of this
    os.execvp("dbus-run-session", ["dbus-run-session", "--", sys.executable, *sys.argv])

SPI = "org.a11y.atspi."
PATIENCE = 20  # seconds


class Element:
    def __init__(self, bus, owner, path):
        self.bus, self.owner, self.path = bus, owner, path
        self.proxy = bus.get_object(owner, path, introspect=False)

    def call(self, interface, method, *arguments):
        return getattr(self.proxy, method)(*arguments, dbus_interface=SPI + interface)

    def name(self):
        return str(self.proxy.Get(SPI + "Accessible", "Name", dbus_interface="org.freedesktop.DBus.Properties"))

    def children(self):
        return [Element(self.bus, *child) for child in self.call("Accessible", "GetChildren")]

    def find(self, role, name):
        """The first of that role and name, outside in."""
        level = [self]
        while level:
            for element in level:
                if element.call("Accessible", "GetRoleName") == role and element.name() == name:
                    return element
            level = [child for element in level for child in element.children()]
        return None

    def act(self):
        """No answer is waited for, since it may come behind a window that this opens."""
        message = dbus.lowlevel.MethodCallMessage(self.owner, self.path, SPI + "Action", "DoAction")
        message.append(0, signature="i")
        message.set_no_reply(True)
        self.bus.send_message(message)
        self.bus.flush()


def wait_for(what, found):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        try:
            if answer := found():
                return answer
        except dbus.exceptions.DBusException:
            pass  # it has gone, or is still coming
        time.sleep(0.05)
    sys.exit(f"never came: {what}")


def run(place):
    for folder in ("config/partkeep-read", "install", "libraries", "staged"):
        (place / folder).mkdir(parents=True)
    config = place / "config/partkeep-read"
    (config / "registry.ini").write_text(
        f"[HKEY_LOCAL_MACHINE\\software\\Velmar\\ORVIC]\ninstallpath={place}/install\n"
        f"[HKEY_CURRENT_USER\\software\\Velmar\\ORVIC\\PartLibrary]\nfolder={place}/libraries\n")
    (place / "install/kpdservers.ini").write_bytes(b"PLATES\r\nBrackets\\U\r\nmetric\r\nPLATES\r\n-9999\r\n0\r\n")
    subprocess.run([samples, place / "libraries"], check=True, stdout=subprocess.DEVNULL)
    session = dbus.SessionBus()
    address = session.get_object("org.a11y.Bus", "/org/a11y/bus").GetAddress(dbus_interface="org.a11y.Bus")
    bus = dbus.bus.BusConnection(address)
    desktop = Element(bus, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
    process = subprocess.Popen(
        [host, "-w", f"{place}/staged/", "--language", "1", "--select-several"], stdout=subprocess.PIPE,
        env={**os.environ, "XDG_CONFIG_HOME": str(place / "config"), "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"})
    try:
        dialog = wait_for("the dialog", lambda: desktop.find("dialog", "Partkeep Read"))
        found = lambda role, name: wait_for(f"{role} {name}", lambda: desktop.find(role, name))
        parts = dialog.find("table", "Parts")
        dialog.find("check box", "Whole server").act()
        dialog.find("text", "Search").call("EditableText", "SetTextContents", "brk l")
        found("cell", "BRK-2, in PLATES\\Brackets\\L")
        parts.call("Table", "AddRowSelection", dbus.Int32(1))  # goes to that part's folder
        found("cell", "BRK-2")
        parts.call("Table", "AddRowSelection", dbus.Int32(2))
        assert list(parts.call("Table", "GetSelectedRows")) == [1, 2]
        parts.call("Table", "RemoveRowSelection", dbus.Int32(1))
        dialog.find("push button", "Add").act()
        listed = found("dialog", "Selected Parts")
        wait_for("the part in the list", lambda: listed.find("tree item", "BRK-3"))
        parts.call("Table", "AddRowSelection", dbus.Int32(0))
        dialog.find("push button", "OK").act()
        output = process.communicate(timeout=PATIENCE)[0].decode()
    finally:
        process.kill()
    names = [line.split()[1] for line in output.splitlines() if line.startswith("  part ")]
    assert names == ["BRK-3", "BRK-1"], output


with tempfile.TemporaryDirectory(prefix="accessible", ignore_cleanup_errors=True) as place:
    run(pathlib.Path(place))
