"""A desktop of its own for a program under test: a screen, a window manager, a session bus, and an empty home."""
import os
import pathlib
import select
import shutil
import signal
import subprocess
import time

SCREEN = "1400x900x24"
START_SECONDS = 20
END_SECONDS = 10


class Stage:
    """What was started here is ended here, by its process id; nothing of the user's own desktop is seen or touched."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.home = self.folder / "home"
        self._started = []
        self._log = open(self.folder / "stage.log", "wb")
        self.environment = self._own_environment()
        display = self._start_screen()
        os.environ.clear()
        os.environ.update(self.environment, DISPLAY=display)
        self._start_bus()
        self._start_window_manager()

    def _own_environment(self):
        runtime = self.folder / "runtime"
        for place in (self.home, runtime):
            place.mkdir()
            place.chmod(0o700)
        return {
            "PATH": os.environ.get("PATH", "/usr/bin:/bin") + ":/usr/sbin:/sbin",
            "LANG": "C.UTF-8",
            "HOME": str(self.home),
            "TMPDIR": str(self.folder),
            "XDG_RUNTIME_DIR": str(runtime),
            "XDG_CONFIG_HOME": str(self.home / ".config"),
            "XDG_DATA_HOME": str(self.home / ".local/share"),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
        }

    def start(self, command, **options):
        options.setdefault("stdout", self._log)
        options.setdefault("stderr", self._log)
        process = subprocess.Popen(
            [str(word) for word in command], stdin=subprocess.DEVNULL, start_new_session=True, **options
        )
        self._started.append(process)
        return process

    def _start_screen(self):
        reading, writing = os.pipe()
        self.start(
            ["Xvfb", "-displayfd", writing, "-screen", "0", SCREEN, "-nolisten", "tcp"],
            pass_fds=[writing],
            env=self.environment,
        )
        os.close(writing)
        return ":" + first_line(reading, "Xvfb")

    def _start_bus(self):
        reading, writing = os.pipe()
        self.start(
            ["dbus-daemon", "--session", "--nofork", "--nopidfile", f"--print-address={writing}"],
            pass_fds=[writing],
        )
        os.close(writing)
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = first_line(reading, "dbus-daemon")

    def _start_window_manager(self):
        """A window that comes before it is never given the keyboard."""
        self.start(["openbox", "--sm-disable"])
        until = time.monotonic() + START_SECONDS
        while subprocess.run(["xdotool", "get_desktop"], capture_output=True, check=False).returncode != 0:
            if time.monotonic() > until:
                raise RuntimeError("openbox did not start")
            time.sleep(0.05)

    def end(self):
        """The last that was started goes first."""
        for process in reversed(self._started):
            end_group(process)
        self._log.close()


def first_line(descriptor, who):
    text = b""
    until = time.monotonic() + START_SECONDS
    while not text.endswith(b"\n"):
        ready, _, _ = select.select([descriptor], [], [], max(0, until - time.monotonic()))
        piece = os.read(descriptor, 4096) if ready else b""
        if not piece:
            raise RuntimeError(f"{who} did not start")
        text += piece
    os.close(descriptor)
    return text.decode().strip()


def end_group(process):
    """Ends a process and what it started in turn."""
    for kind in (signal.SIGTERM, signal.SIGKILL):
        try:
            os.killpg(process.pid, kind)
        except ProcessLookupError:
            pass
        try:
            process.wait(END_SECONDS)
            return
        except subprocess.TimeoutExpired:
            continue


def missing_tools(names):
    search = os.environ.get("PATH", "") + ":/usr/sbin:/sbin"
    return [name for name in names if shutil.which(name, path=search) is None]


def unpacked(program, folder):
    """A copy of the program with what belongs to it: it writes the chosen language beside itself when it can."""
    programs = folder / "bin"
    programs.mkdir(parents=True)
    for name in ("lumivault", "lumivault-open-device", "config.ini"):
        if (program.parent / name).exists():
            shutil.copy(program.parent / name, programs / name)
    shutil.copytree(program.parent / "Languages", programs / "Languages")
    started = program.parent.parent / "libexec"
    if started.is_dir():
        shutil.copytree(started, folder / "libexec", symlinks=True)
    return programs / "lumivault"
