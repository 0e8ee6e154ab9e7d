"""Hosts of all kinds in environments of all kinds: each operation ends with its result within 2 s, nothing kills the
host, and nothing is written to standard output. Run on an X server, whose windows it closes by Escape.
  environments.py HOST INTERFACE-FOLDER LIBRARY-TOOL"""
import concurrent.futures
import os
import pathlib
import resource
import shutil
import socket
import subprocess
import sys
import tempfile
import time

host, interface, samples = map(pathlib.Path, sys.argv[1:])
sanitized = b"__asan_init" in (interface / "libORVICPartkeepRead.so.1").read_bytes()
place = pathlib.Path(tempfile.mkdtemp(prefix="environments"))
os.chmod(place, 0o755)
live = os.environ["DISPLAY"]
stale, mute = 20000 + os.getpid() % 10000, 30000 + os.getpid() % 10000  # displays of this run's own


def components():
    """Folders with a component each, whole or without something."""
    for name, probe in (("whole", None), ("bare", None), ("no probe", None), ("no plugins", None),
                        ("crashed", "kill -SEGV $$"), ("stopped", "kill -STOP $$"), ("lying", "exit 0")):
        folder = place / name
        shutil.copytree(interface, folder, symlinks=True, ignore=shutil.ignore_patterns("CMakeFiles"))
        program = folder / "partkeep-read/partkeep-read-screen"
        if name == "bare":
            shutil.rmtree(folder / "partkeep-read")
        elif name == "no probe":
            program.unlink()
        elif name == "no plugins":
            (folder / "partkeep-read/qt.conf").write_text("[Paths]\nPlugins=/nonexistent\n")
        elif probe:
            program.unlink()
            program.write_text("#!/bin/sh\n" + probe + "\n")
            program.chmod(0o755)


def display_socket(path, answers):
    """A socket of a display server that is stale, or takes connections and says nothing."""
    listening = socket.socket(socket.AF_UNIX)
    path.unlink(missing_ok=True)
    listening.bind(str(path))
    if answers:
        listening.listen()
    return listening, path


def compositor():
    """A Wayland session in a window on the X server; nothing where the machine cannot have one."""
    if not shutil.which("weston") or not any(pathlib.Path("/usr/lib").glob("*/qt6/plugins/platforms/libqwayland-*")):
        print("environments: Skipped\nneeds Weston and the toolkit's part for it\n[  SKIPPED ] Wayland (0 ms)")
        return None
    session = subprocess.Popen(
        ["weston", "--backend=x11-backend.so", "--use-pixman", "--no-config", "--idle-time=0", "--socket=wayland-7",
         "--width=1800", "--height=1000"], env={**os.environ, "XDG_RUNTIME_DIR": str(place / "run")},
        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    for _ in range(100):
        if (place / "run/wayland-7").exists() or session.poll() is not None:
            break
        time.sleep(0.1)
    return session


def server_without_clients(*at_last_leave):
    """An X server that starts anew whenever its last client leaves, or does what is told, and its display."""
    server = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "2200x1200x24", "-nolisten", "tcp",
                               *at_last_leave], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    return server, {"DISPLAY": ":" + server.stdout.readline().decode().strip(), "SERVER": str(server.pid)}


def wayland(number):
    return {"WAYLAND_DISPLAY": f"wayland-{number}", "XDG_RUNTIME_DIR": str(place / "run")}


def limit(which, amount):
    return lambda: resource.setrlimit(which, (amount, amount))


def without(*streams):
    return lambda: [os.close(stream) for stream in streams]


# No window, one that is closed by Escape, one in which the host exits, one in which the display server ends.
NONE, SHOWN, LEFT, LOST = "none", "shown", "left", "lost"
X = {"DISPLAY": live}
servers = {name: server_without_clients(*words) for name, *words in (
    ("starts anew",), ("ends", "-terminate"), ("ends in a message",), ("ends in the dialog",))}
ROWS = [  # label, kind of host, environment, what comes, component, last step before the host starts
    ("no screen named", "plain", {}, NONE),
    *[("platform " + name, "plain", {**X, "QT_QPA_PLATFORM": name}, NONE) for name in (
        "eglfs", "minimalegl", "nonsense", "offscreen", "minimal", "minimal:enable_fonts", "linuxfb:fb=/nonexistent",
        "wayland", "vkkhrdisplay")],
    ("platform with a second choice", "plain", {**X, "QT_QPA_PLATFORM": "bogus;xcb"}, SHOWN),
    ("second choice, no server", "plain", {"DISPLAY": ":4711", "QT_QPA_PLATFORM": "bogus;xcb"}, NONE),
    ("stale Wayland socket", "plain", wayland(9), NONE),
    ("Wayland server that says nothing", "plain", wayland(8), NONE),
    ("no X server", "plain", {"DISPLAY": ":4711"}, NONE),
    ("stale X socket", "plain", {"DISPLAY": f":{stale}"}, NONE),
    ("X server that says nothing", "plain", {"DISPLAY": f":{mute}"}, NONE),
    ("no plugins", "plain", X, NONE, "no plugins"),
    ("plugins of nobody", "plain", {**X, "QT_QPA_PLATFORM_PLUGIN_PATH": "/nonexistent"}, SHOWN),
    ("no part that draws", "plain", X, NONE, "bare"),
    ("no probe", "plain", X, NONE, "no probe"),
    ("probe that crashes", "plain", X, NONE, "crashed"),
    ("probe that hangs", "plain", X, NONE, "stopped"),
    ("probe that ends in peace", "plain", X, NONE, "lying"),
    ("no locale", "plain", {**X, "LC_ALL": "nonsense"}, SHOWN),
    ("no home, no fonts", "plain", {**X, "HOME": "/nonexistent", "FONTCONFIG_FILE": "/dev/null"}, SHOWN),
    ("read-only home", "plain", {**X, "HOME": "/proc", "XDG_RUNTIME_DIR": "/proc"}, SHOWN),
    ("no stdin", "plain", X, SHOWN, "whole", without(0)),
    ("no streams, screen", "plain", X, SHOWN, "whole", without(0, 1, 2)),
    ("no streams, no screen", "plain", {}, NONE, "whole", without(0, 1, 2)),
    ("errors go nowhere", "broken pipe for errors", {}, NONE),
    ("errors go nowhere, screen", "broken pipe for errors", X, SHOWN),
    ("small stack", "small stack", X, NONE),
    ("few files", "plain", X, NONE, "whole", limit(resource.RLIMIT_NOFILE, 24)),
    *([] if sanitized else [("little memory", "plain", X, NONE, "whole", limit(resource.RLIMIT_AS, 256 << 20))]),
    ("raised rights", "raised rights", X, NONE),
    ("raised rights, own application", "raised rights, own application", X, NONE),
    ("own application without windows", "core", X, NONE),
    ("own application without widgets", "gui", X, NONE),
    ("another thread than the application's", "other thread", X, NONE),
    ("forked from a host with windows", "fork of a window host", X, NONE),
    ("forked", "fork", X, SHOWN),
    ("on a thread", "thread", X, SHOWN),
    ("host on another toolkit", "gtk", X, SHOWN),
    ("children ignored", "ignores children", X, SHOWN),
    ("children reaped", "reaps children", X, SHOWN),
    ("children counted", "knows its children", {"DISPLAY": ":4711"}, NONE),
    ("exit in the dialog", "exits in the dialog", X, LEFT),
    ("signals blocked", "blocks signals", X, SHOWN),
    ("server that ends with its last client", "closes its windows", servers["ends"][1], SHOWN),
    ("server that ends in a message", "loses the screen in a message", servers["ends in a message"][1], NONE),
    ("server that ends in the dialog", "loses the screen in the dialog", servers["ends in the dialog"][1], LOST),
    ("server that starts anew", "closes its windows, again and again", servers["starts anew"][1], SHOWN),
]


def run(number, label, kind, environment, expected, component="whole", before=None):
    """What is wrong with the row, or nothing."""
    work = place / f"row{number}"
    work.mkdir()
    work.chmod(0o777)
    # What toolkits keep until the process ends is no matter of this table.
    kept = {name: os.environ[name] for name in ("PATH", "LLVM_PROFILE_FILE") if name in os.environ}
    base = {**kept, "HOME": str(place), "XDG_CONFIG_HOME": str(place / "config"),
            "ASAN_OPTIONS": "detect_leaks=0"}
    with open(work / "err", "wb") as errors, open(work / "out", "wb") as output:
        process = subprocess.Popen(
            [host, place / component / "libORVICPartkeepRead.so.1", f"{work}/", work / "result", kind],
            env={**base, **environment}, stdout=output, stderr=errors, preexec_fn=before)
        for _ in range(200):
            try:
                process.wait(0.15)
                break
            except subprocess.TimeoutExpired:
                if expected != NONE:
                    subprocess.run(["xdotool", "key", "Escape"], capture_output=True)
        else:
            process.kill()
            return f"{label}: hangs"
    if process.returncode == 77:
        print(f"environments: Skipped\nneeds root, or the other toolkit\n[  SKIPPED ] {label.replace(' ', '_')} (0 ms)")
        return None
    told = (work / "err").read_text(errors="replace")
    result = (work / "result").read_text().split() if (work / "result").exists() else []
    wrong = []
    if process.returncode != 0 or result[:5] != (["0", "1", "1", "0", "0"] if expected != LEFT else []):
        wrong.append(f"ends with {process.returncode}, results {result}")
    if (work / "out").stat().st_size:
        wrong.append("writes to standard output")
    if result and expected == NONE and int(result[5]) >= (6000 if sanitized else 2000):
        wrong.append(f"takes {result[5]} ms")
    streams = "no streams" not in label and "nowhere" not in label
    if streams and told.count("No window can be shown") != {NONE: 2, LOST: 1}.get(expected, 0):
        wrong.append("a window" if expected == NONE else "no window")
    if streams and ("Server could not be connected." in told) != (expected == NONE):
        wrong.append("message in the wrong place")
    return f"{label}: {', '.join(wrong)}; it says:\n{told}" if wrong else None


components()
x_sockets = pathlib.Path("/tmp/.X11-unix")
(place / "run").mkdir(mode=0o700)
sockets = [display_socket(x_sockets / f"X{stale}", False), display_socket(x_sockets / f"X{mute}", True),
           display_socket(place / "run/wayland-9", False), display_socket(place / "run/wayland-8", True)]
(place / "config/partkeep-read").mkdir(parents=True)
(place / "libraries").mkdir()
(place / "config/partkeep-read/registry.ini").write_text(
    "[HKEY_LOCAL_MACHINE\\software\\Velmar\\ORVIC]\ninstallpath={0}\n"
    "[HKEY_CURRENT_USER\\software\\Velmar\\ORVIC\\PartLibrary]\nfolder={0}/libraries\n".format(place))
subprocess.run([samples, place / "libraries"], check=True, stdout=subprocess.DEVNULL)
with concurrent.futures.ThreadPoolExecutor(2) as pool:
    quiet = [pool.submit(run, number, *row) for number, row in enumerate(ROWS) if row[3] == NONE]
    seen = [run(number, *row) for number, row in enumerate(ROWS) if row[3] != NONE]
    session = compositor()
    if session:
        seen += [run(len(ROWS), "Wayland session", "plain", wayland(7), SHOWN),
                 run(len(ROWS) + 1, "Wayland session that ends in the dialog", "loses the screen in the dialog",
                     {**wayland(7), "SERVER": str(session.pid)}, LOST)]
        session.terminate()
        session.wait()
    wrong = [row for row in [*[row.result() for row in quiet], *seen] if row]
for server, _ in servers.values():
    server.terminate()
    server.wait()
for listening, path in sockets:
    listening.close()
    path.unlink()
shutil.rmtree(place)
print("\n".join(wrong) or f"{len(ROWS)} environments")
sys.exit(1 if wrong else 0)
