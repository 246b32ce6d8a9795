"""A desktop for one journey through velmora-demo: a private X server (Xvfb), the
accessibility bus of at-spi2-core, the demo on a fresh sample account with Qt's xcb
platform, a reader that walks it with pyatspi as a screen reader does, and keys sent to
the real window with xdotool.

Run a journey inside its own D-Bus session (dbus-run-session); the journey's tests/ui
CMake entries do. Everything started here is stopped when the `with` block ends, whatever
happened. Waits poll with a bound; nothing sleeps for a fixed time.
"""

import json
import os
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from gi.repository import GLib

POLL = 0.05
JOURNEY_SECONDS = 100  # a whole journey, from Xvfb's start to the last step
CODE_NAME = re.compile(r"\b[A-Z][A-Za-z]*_[A-Za-z]")  # Txt_Barre1, MAJ_Enr
TITLE = "Velmora — démonstration"
# The intervention the demo opens by default, as a `velmora play` line.
INIT = "init AUTRE 00001 23/11/2026 23/11/2026 08:30 10:00 1000000"


class JourneyFailure(AssertionError):
    pass


class JourneyStopped(JourneyFailure):
    """Out of time or stopped from outside: no step may take it as its expected failure."""


def check(condition, message):
    if not condition:
        raise JourneyFailure(message)


def step(title, missing=None):
    """Runs the decorated function at once as one step of a journey. `missing` names a
    feature of the widget that is known not to be there yet: the step must then fail (it
    is reported, and the journey goes on), and passing tells to drop the note."""

    def do(body):
        try:
            body()
        except (JourneyFailure, NotImplementedError, GLib.Error) as failure:
            # An interface the object lacks, or a call the application refused, is a
            # failure of the step too.
            if isinstance(failure, JourneyStopped):
                raise
            if isinstance(failure, NotImplementedError):
                failure = "an object lacks the AT-SPI interface the step uses"
            if not missing:
                raise JourneyFailure(f"{title}: {failure}") from None
            print(f"EXPECTED FAILURE: {title}: {failure}\n  missing: {missing}", flush=True)
            return body
        if missing:
            raise JourneyFailure(f"{title}: passes now; drop the note « {missing} »")
        print(f"ok: {title}", flush=True)
        return body

    return do


def run(journey):
    """Runs a journey and gives its exit status: a failure is told in one paragraph."""
    try:
        journey()
    except JourneyFailure as failure:
        print(f"FAILED: {failure}", file=sys.stderr)
        return 1
    return 0


def wait_for(what, probe, seconds=10.0, alive=None):
    """Polls probe() until it gives a true value, and returns it; fails after `seconds`
    naming `what` and the last error the probe raised, or at once if `alive` says the
    demo is gone."""
    end = time.monotonic() + seconds
    last_error = None
    while True:
        if alive is not None:
            alive()
        # libatspi learns of new applications and changes through the bus's signals,
        # which arrive in GLib's main loop: let them in before asking.
        context = GLib.MainContext.default()
        while context.pending():
            context.iteration(False)
        try:
            value = probe()
            if value:
                return value
        except Exception as error:  # a remote object may vanish or not answer yet
            last_error = error
        if time.monotonic() > end:
            detail = f" (last error: {last_error})" if last_error else ""
            raise JourneyFailure(f"{what}: not seen within {seconds:g} s{detail}")
        time.sleep(POLL)


def _stop(process, seconds=5.0):
    if process is None or process.poll() is not None:
        return
    try:
        os.killpg(process.pid, signal.SIGTERM)
    except ProcessLookupError:
        return
    try:
        process.wait(seconds)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()


class Desktop:
    """with Desktop() as desk: desk.app is the demo's accessible application."""

    def __init__(self, demo_args=()):
        self.demo_path = os.environ["VELMORA_DEMO"]
        self.cli_path = os.environ["VELMORA_CLI"]
        self.demo_args = list(demo_args)
        self.shots = os.environ.get("VELMORA_UI_SHOTS")
        self._processes = []
        self.demo = None
        self.app = None

    # -- starting and stopping ------------------------------------------------------

    def __enter__(self):
        check(
            "DBUS_SESSION_BUS_ADDRESS" in os.environ,
            "run the journey inside dbus-run-session: it needs a session bus of its own",
        )
        # Past its time, or stopped by ctest, a journey still stops what it started.
        def give_up(number, _frame):
            raise JourneyStopped(f"the journey was stopped ({signal.Signals(number).name})")

        signal.signal(signal.SIGALRM, give_up)
        signal.signal(signal.SIGTERM, give_up)
        signal.alarm(JOURNEY_SECONDS)
        self._tmp = tempfile.TemporaryDirectory(prefix="velmora-ui-")
        self.dir = self._tmp.name
        try:
            self._start()
        except BaseException:
            self.__exit__(None, None, None)
            raise
        return self

    def __exit__(self, kind, value, traceback):
        signal.alarm(0)
        if kind is not None:
            self.shot("failure")
        sanitizer = self._stop_demo()
        for process in reversed(self._processes):
            _stop(process)
        self._tmp.cleanup()
        if kind is None and sanitizer:
            raise JourneyFailure("velmora-demo reported a fault:\n" + sanitizer)
        return False

    def _spawn(self, argv, **kwargs):
        process = subprocess.Popen(argv, start_new_session=True, env=self.env, **kwargs)
        self._processes.append(process)
        return process

    def _start(self):
        self.env = dict(os.environ)
        runtime = os.path.join(self.dir, "run")
        os.mkdir(runtime, 0o700)
        self.env.update(
            XDG_RUNTIME_DIR=runtime,
            XDG_DATA_HOME=os.path.join(self.dir, "data"),
            QT_QPA_PLATFORM="xcb",
            QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
            NO_AT_BRIDGE="0",
        )
        self._start_x()
        self.env["DISPLAY"] = self.display
        os.environ["DISPLAY"] = self.display  # pyatspi finds the bus through it too
        launcher = shutil.which("at-spi-bus-launcher", path="/usr/libexec:/usr/lib/at-spi2-core")
        check(launcher, "at-spi-bus-launcher is missing: scripts/setup installs at-spi2-core")
        self._spawn([launcher, "--launch-immediately"], stdout=subprocess.DEVNULL,
                    stderr=subprocess.DEVNULL)

        self.store = os.path.join(self.dir, "sample.db")
        subprocess.run(
            [self.cli_path, "sample", "--db", self.store],
            check=True,
            stdout=subprocess.DEVNULL,
            env=self.env,
        )
        self.demo_log = open(os.path.join(self.dir, "demo.log"), "w+")
        self.demo = self._spawn(
            [self.demo_path, "--db", self.store, *self.demo_args],
            stdout=self.demo_log,
            stderr=subprocess.STDOUT,
        )
        import pyatspi  # after DISPLAY and the bus are known

        self.atspi = pyatspi
        self.app = wait_for("velmora-demo on the accessibility bus", self._find_app, 40, self.alive)

    def _start_x(self):
        # A display number away from the low ones that people and other tools take, free
        # of lock files; if another server takes it meanwhile ours exits, and the next is
        # tried. -displayfd: the server tells when it is ready.
        first = 200 + os.getpid() % 500
        for number in range(first, first + 20):
            if os.path.exists(f"/tmp/.X{number}-lock"):
                continue
            server = self._start_x_on(number)
            if server is None:
                continue
            self.display = f":{number}"
            # Ready means reachable: a client must get an answer from it.
            wait_for(f"the X server {self.display} to answer", lambda: subprocess.run(
                ["xdotool", "getdisplaygeometry"], env={**self.env, "DISPLAY": self.display},
                capture_output=True).returncode == 0, 10, alive=lambda: check(
                    server.poll() is None, f"the X server {self.display} stopped"))
            return
        raise JourneyFailure(f"no X server could start on displays {first} to {first + 19}")

    def _start_x_on(self, number):
        """Xvfb on :number once it is ready, or None if it could not take the number."""
        read_end, write_end = os.pipe()
        server = self._spawn(
            ["Xvfb", f":{number}", "-displayfd", str(write_end), "-screen", "0", "1600x1000x24",
             # -noreset: the readiness probe's disconnection must not make it reset
             # while the demo connects.
             "-noreset", "-nolisten", "tcp"],
            pass_fds=(write_end,),
            stderr=subprocess.DEVNULL,
        )
        os.close(write_end)
        answer = b""
        end = time.monotonic() + 10
        try:
            while not answer.endswith(b"\n"):
                ready, _, _ = select.select([read_end], [], [], max(0.0, end - time.monotonic()))
                check(ready, "Xvfb did not start within 10 s")
                chunk = os.read(read_end, 16)
                if not chunk:  # it exited: the number was taken
                    server.wait()
                    self._processes.remove(server)
                    return None
                answer += chunk
        finally:
            os.close(read_end)
        return server

    def _stop_demo(self):
        """Stops the demo and returns what a sanitizer reported, if anything."""
        if self.demo is None:
            return ""
        _stop(self.demo)
        self.demo_log.seek(0)
        log = self.demo_log.read()
        self.demo_log.close()
        faults = [
            line
            for line in log.splitlines()
            if "Sanitizer" in line or "runtime error:" in line
        ]
        return "\n".join(faults)

    def alive(self):
        if self.demo.poll() is not None:
            self.demo_log.seek(0)
            raise JourneyFailure(
                f"velmora-demo ended ({self.demo.returncode}):\n{self.demo_log.read()[-3000:]}"
            )

    def _find_app(self):
        for app in self.atspi.Registry.getDesktop(0):
            if app is not None and app.name == "velmora-demo":
                return app
        return None

    def wait(self, what, probe, seconds=10.0):
        return wait_for(what, probe, seconds, alive=self.alive)

    # -- what a screen reader reads -------------------------------------------------

    def wait_reads(self, what, read, expected, seconds=10.0):
        """Waits until read() gives `expected`; a failure tells what it read last."""
        last = []

        def probe():
            last[:] = [read()]
            return last[0] == expected

        try:
            self.wait(what, probe, seconds)
        except JourneyFailure as failure:
            raise JourneyFailure(f"{failure}; it reads « {last[0] if last else '?'} »") from None

    def find(self, what, predicate, root=None, seconds=10.0):
        root = root or self.app
        return self.wait(what, lambda: self.atspi.findDescendant(root, predicate), seconds)

    def by_name(self, role, name, root=None, seconds=10.0):
        return self.find(
            f"« {name} » ({role.value_nick if hasattr(role, 'value_nick') else role})",
            lambda o: o is not None and o.getRole() == role and o.name == name,
            root,
            seconds,
        )

    def states(self, accessible):
        return set(accessible.getState().getStates())

    def showing(self, accessible):
        return self.atspi.STATE_SHOWING in self.states(accessible)

    def labels(self, accessible):
        """The names of the labels linked to an object (its buddies)."""
        return [
            relation.getTarget(i).name
            for relation in accessible.getRelationSet()
            if relation.getRelationType() == self.atspi.RELATION_LABELLED_BY
            for i in range(relation.getNTargets())
        ]

    def text(self, accessible):
        return accessible.queryText().getText(0, -1)

    def children(self, accessible):
        return [accessible.getChildAtIndex(i) for i in range(accessible.childCount)]

    def row_names(self, accessible):
        return [child.name for child in self.children(accessible)]

    def row_of(self, accessible, words):
        """The index of the first row whose name holds `words`."""
        rows = self.row_names(accessible)
        found = [i for i, row in enumerate(rows) if words in row]
        check(found, f"no row « {words} » in « {accessible.name} »: {rows}")
        return found[0]

    def act(self, accessible, *names):
        """Does the first of the named actions the object offers (as a screen reader's
        command does) and fails if it offers none of them."""
        action = accessible.queryAction()
        offered = [action.getName(i) for i in range(action.nActions)]
        for name in names:
            if name in offered:
                check(action.doAction(offered.index(name)), f"the action {name} was refused")
                return
        raise JourneyFailure(f"« {accessible.name} » offers {offered}, none of {list(names)}")

    def focused(self):
        """The object that holds the keyboard focus, searched from the application."""
        return self.atspi.findDescendant(
            self.app, lambda o: o is not None and self.atspi.STATE_FOCUSED in self.states(o)
        )

    def play(self, gestures):
        """The state the headless control reaches with the same gestures on the same
        sample account (the demo never wrote to it), from `velmora play --json`."""
        script = "\n".join(gestures) + "\n"
        path = os.path.join(self.dir, "gestures.play")
        with open(path, "w") as out:
            out.write(script)
        answer = subprocess.run(
            [self.cli_path, "play", "--db", self.store, path, "--json"],
            capture_output=True, text=True, env=self.env, timeout=30,
        )
        check(answer.returncode == 0, f"velmora play failed on:\n{script}{answer.stderr}")
        played = json.loads(answer.stdout)
        check(not played["messages"], f"velmora play reported {played['messages']} on:\n{script}")
        return played["shows"][-1]["state"]

    def unnamed_or_code_named(self, root):
        """What a screen reader could not name in French: shown objects without a name or
        with a code name (Txt_Barre1, MAJ_Enr), and lists kept out of sight (Lst_CodePos)
        that are still in the tree."""
        faults = []
        pz = self.atspi
        quiet = {pz.ROLE_FILLER, pz.ROLE_PANEL, pz.ROLE_TABLE_CELL, pz.ROLE_SCROLL_BAR,
                 pz.ROLE_TABLE_COLUMN_HEADER, pz.ROLE_TABLE_ROW_HEADER, pz.ROLE_SEPARATOR}

        def visit(node, path):
            role = node.getRole()
            here = f"{path}/{node.getRoleName()} « {node.name} »"
            if role in (pz.ROLE_LIST, pz.ROLE_LIST_BOX) and not self.showing(node):
                faults.append(f"{here}: a list no one sees is in the tree")
                return
            if self.showing(node) and role not in quiet and not node.name.strip():
                faults.append(f"{here}: no name")
            if CODE_NAME.search(node.name):
                faults.append(f"{here}: a code name")
            if role in (pz.ROLE_LIST, pz.ROLE_LIST_BOX, pz.ROLE_TABLE, pz.ROLE_COMBO_BOX):
                return  # their rows are data, which the journeys read themselves
            for child in self.children(node):
                if child is not None:
                    visit(child, here)

        visit(root, "")
        return faults

    def holds_focus(self, accessible):
        """Whether the object or one of its rows has the keyboard focus."""
        focused = self.atspi.STATE_FOCUSED
        return focused in self.states(accessible) or any(
            focused in self.states(row) for row in self.children(accessible)
        )

    def tab_to(self, what, accessible, presses=40):
        """Tab until the object (or one of its rows) has the focus, as a planner tabs
        until the focus is drawn where they want it."""
        for _ in range(presses):
            if self.holds_focus(accessible):
                return
            before = self.focused()
            self.keys("Tab")
            self.wait(f"the focus to move from « {before.name if before else '?'} »",
                      lambda: self.focused() != before or self.holds_focus(accessible), 3)
        check(self.holds_focus(accessible), f"{presses} Tab presses never reached {what}")

    # -- keys and pictures ----------------------------------------------------------

    def focus_window(self, title):
        window = self.wait(
            f"the X window « {title} »",
            lambda: subprocess.run(
                ["xdotool", "search", "--onlyvisible", "--name", title],
                env=self.env,
                capture_output=True,
                text=True,
            ).stdout.split(),
        )[0]
        # No window manager runs: give the window the input focus ourselves, as one does
        # when a window opens or a dialog over it closes (X alone gives it to the root).
        subprocess.run(["xdotool", "windowfocus", "--sync", window], env=self.env, check=True)

    def keys(self, *keys):
        """Key presses to the window that has the X input focus, such as "Tab",
        "Return", "shift+Tab", "alt+g"."""
        subprocess.run(["xdotool", "key", "--delay", "40", *keys], env=self.env, check=True)

    def type(self, text):
        subprocess.run(["xdotool", "type", "--delay", "40", text], env=self.env, check=True)

    def shot(self, name):
        """The whole screen as an X window dump, when VELMORA_UI_SHOTS names a folder."""
        if not self.shots or not getattr(self, "display", None) or not shutil.which("xwd"):
            return
        os.makedirs(self.shots, exist_ok=True)
        subprocess.run(
            ["xwd", "-root", "-silent", "-display", self.display, "-out",
             os.path.join(self.shots, f"{name}.xwd")],
            env=self.env,
        )

