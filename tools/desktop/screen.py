"""What is on the screen, as assistive software sees it, and the mouse and the keyboard: the only ways to the program."""
import re
import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402

BUS_MILLISECONDS = 20000
LOOK_AGAIN_SECONDS = 0.05
WAIT_SECONDS = 20
WINDOW_ROLES = ("frame", "dialog", "window", "popup menu")


class NotSeen(Exception):
    """What was waited for did not come."""


class Item:
    """A control as it was at one moment."""

    def __init__(self, node, window):
        self.role = node.get_role_name()
        self.name = node.get_name() or ""
        self.states = {state.value_nick for state in node.get_state_set().get_states()}
        place = node.get_extents(Atspi.CoordType.SCREEN)
        self.left, self.top, self.width, self.height = place.x, place.y, place.width, place.height
        self.node = node
        self.window = window

    def value(self):
        return self.node.get_value_iface().get_current_value()

    def __str__(self):
        shown = " ".join(sorted(self.states - {"showing", "visible", "enabled", "sensitive"}))
        place = f"{self.width}x{self.height}+{self.left}+{self.top}"
        return f"{self.role} {self.name!r} {place} {shown}"


class Wanted:
    """A description of a control. Name: a text, or a compiled pattern; window: the name of the window that it is in."""

    def __init__(self, role, name=None, window=None, states=(), without=(), beside=None, widths=(0, 1 << 20)):
        self.role, self.name, self.window = role, name, window
        self.states, self.without, self.beside, self.widths = set(states), set(without), beside, widths

    def fits(self, item):
        if self.role != item.role or not names_fit(self.name, item.name):
            return False
        if self.window is not None and not names_fit(self.window, item.window):
            return False
        if self.beside is not None and item.top != self.beside.top:
            return False
        if not self.widths[0] <= item.width <= self.widths[1]:
            return False
        return self.states <= item.states and not self.without & item.states

    def __str__(self):
        name = self.name.pattern if isinstance(self.name, re.Pattern) else self.name
        parts = [self.role] + ([repr(name)] if name is not None else [])
        parts += [f"in {self.window!r}"] if self.window is not None else []
        parts += [f"being {' '.join(sorted(self.states))}"] if self.states else []
        parts += [f"not being {' '.join(sorted(self.without))}"] if self.without else []
        return " ".join(parts)


def names_fit(wanted, name):
    if isinstance(wanted, re.Pattern):
        return wanted.search(name) is not None
    return wanted is None or wanted == name


class Screen:
    def __init__(self):
        # As a screen reader does: programs that start from now on, or run, tell what they show.
        bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        on = GLib.Variant("(ssv)", ("org.a11y.Status", "IsEnabled", GLib.Variant("b", True)))
        bus.call_sync(
            "org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set", on, None, 0, BUS_MILLISECONDS, None
        )
        Atspi.init()
        self._desktop = Atspi.get_desktop(0)
        self._desktop.set_cache_mask(Atspi.Cache.NONE)

    def look(self):
        """All that is shown now. What goes away meanwhile is left out."""
        seen = []
        for program in children(self._desktop):
            for window in children(program):
                self._look_into(window, None, seen)
        return seen

    def _look_into(self, node, window, seen):
        try:
            item = Item(node, window)
        except GLib.Error:
            return
        if window is None:
            item.window = item.name
        if "showing" not in item.states:
            return
        seen.append(item)
        for child in children(node):
            self._look_into(child, item.window, seen)

    def wait_until(self, what, holds, seconds=WAIT_SECONDS):
        """The first true value that `holds` gives for what is shown."""
        until = time.monotonic() + seconds
        while True:
            seen = self.look()
            found = holds(seen)
            if found:
                return found
            if time.monotonic() > until:
                raise NotSeen(f"expected within {seconds} s: {what}\nshown instead:\n{listing(seen)}")
            time.sleep(LOOK_AGAIN_SECONDS)

    def all(self, *description, **more):
        wanted = Wanted(*description, **more)
        return [item for item in self.look() if wanted.fits(item)]

    def wait(self, *description, seconds=WAIT_SECONDS, **more):
        wanted = Wanted(*description, **more)
        return self.wait_until(
            wanted, lambda seen: next((item for item in seen if wanted.fits(item)), None), seconds
        )

    def wait_gone(self, *description, seconds=WAIT_SECONDS, **more):
        wanted = Wanted(*description, **more)
        self.wait_until(f"no {wanted}", lambda seen: not any(map(wanted.fits, seen)), seconds)

    def click(self, *description, at=None, **more):
        """Waits for the control, and for it to be where it is: what still moves is not clicked."""
        more.setdefault("states", ("enabled",))
        item = self.wait(*description, **more)
        while (again := self.wait(*description, **more)) and str(again) != str(item):
            item = again
        self.point_at(item, at)
        subprocess.run(["xdotool", "click", "1"], check=True)
        return item

    def point_at(self, item, at=None):
        x, y = at or (item.width // 2, item.height // 2)
        subprocess.run(["xdotool", "mousemove", str(item.left + x), str(item.top + y)], check=True)

    def key(self, *names):
        subprocess.run(["xdotool", "key", *names], check=True)

    def type(self, text):
        subprocess.run(["xdotool", "type", "--delay", "8", str(text)], check=True)


def children(node):
    try:
        for index in range(node.get_child_count()):
            child = node.get_child_at_index(index)
            if child is not None:
                yield child
    except GLib.Error:
        return


def listing(seen):
    kept = [item for item in seen if item.name or item.role in ("progress bar", "text")]
    return "\n".join(f"  [{item.window}] {item}" for item in kept)


def picture_of(path, item=None):
    """Saves the screen, or the place of a control on it."""
    area = ["-crop", f"{item.width}x{item.height}+{item.left}+{item.top}", "+repage"] if item else []
    subprocess.run(["import", "-window", "root", *area, str(path)], check=True)


def colours_of(path):
    counted = subprocess.run(["identify", "-format", "%k", str(path)], check=True, capture_output=True, text=True)
    return int(counted.stdout)
