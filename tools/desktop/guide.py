"""The road through the program that the user guide shows, with a picture of each place. Every step waits for what the guide says is seen."""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import time

import media
from screen import NotSeen, picture_of
from wording import PLACEHOLDER, Wording

LANGUAGES = {"English": "English", "German": "Deutsch"}
MAIN = "Orvanta Lumivault"
CARD_LABEL = "HOLIDAY"
CARD_MEGABYTES = 96
CARD_FOLDER = "DCIM/Summer"
READING_SPEED = 16 << 20  # slow enough for the windows of tasks to be seen
BAD_BYTES = 64 << 10
SCAN_SECONDS = 120
DEVICE_SECONDS = 30
TOLD_AFTER_SECONDS = 1.3  # a tooltip
DRAWN_AFTER_SECONDS = 0.6
BUTTON_WIDTHS = (50, 2000)
MARK_WIDTHS = (1, 49)
COLOURS = 128

SKIES = ["#ffb27a-#34568b", "#9fd3ff-#e8f6ff", "#ffd36b-#c8553d", "#243b6b-#8fb8de", "#f6c6d0-#5d7fb0", "#bfe3c0-#3c6e71"]
SCENES = ["Boat in the bay", "Breakfast outside", "Evening at the pier", "First night", "Market", "Path to the lake"]


def scene(index):
    """A made-up landscape, each in other colours."""
    sun = 120 + 90 * index
    hills = f"0,{430 - 12 * index} 180,{330 + 14 * index} 420,{440 - 9 * index} 640,{350 + 10 * index} 900,430 900,600 0,600"
    return [
        "convert", "-size", "900x600", f"gradient:{SKIES[index]}",
        "-fill", "#fff3c4", "-draw", f"circle {sun},190 {sun + 48},190",
        "-fill", "#2c4a52", "-draw", f"polygon {hills}",
        "-fill", "#1b2f36", "-draw", "polygon 0,520 300,470 620,540 900,490 900,600 0,600",
        "-attenuate", "0.25", "-seed", str(index), "+noise", "Gaussian", "-quality", "90",
    ]  # fmt: skip


RECIPES = {f"{name}.jpg": scene(index) for index, name in enumerate(SCENES)} | {
    "Plan of the garden.png": media.RECIPES["Garden plan.png"],
    "Bells in the morning.mp3": media.RECIPES["Morning bell.mp3"],
    "Song by the fire.mp3": ["ffmpeg", "-f", "lavfi", "-i", "sine=330:duration=9", "-b:a", "64k"],
    "Swimming.avi": media.RECIPES["Boat trip.avi"],
}


class Card:
    """A camera's card: some files deleted one by one, a folder deleted with all in it, and one beginning overwritten since."""

    def __init__(self, folder):
        originals = folder / "originals"
        originals.mkdir()
        for name, recipe in RECIPES.items():
            media.run(*recipe, originals / name)
        self.image = folder / "card.img"
        with open(self.image, "wb") as card:
            card.truncate(CARD_MEGABYTES << 20)
        media.run("mkfs.fat", "-F", "32", "-s", 1, "-n", CARD_LABEL, self.image)
        media.run("mmd", "-i", self.image, "::/DCIM", f"::/{CARD_FOLDER}")
        for name in RECIPES:
            place = f"{CARD_FOLDER}/" if name.endswith("jpg") else ""
            media.run("mcopy", "-i", self.image, originals / name, f"::/{place}{name}")
        media.run("mdeltree", "-i", self.image, "::/DCIM")
        for name in RECIPES:
            if not name.endswith("jpg"):
                media.run("mdel", "-i", self.image, f"::/{name}")
        self._overwrite((originals / "Song by the fire.mp3").read_bytes())
        clip = (originals / "Swimming.avi").read_bytes()
        middle = len(clip) // 2
        self.bad_from = self.image.read_bytes().index(clip[middle : middle + 512]) // 512 * 512
        self.stick = media.Stick(self.image)

    def _overwrite(self, song):
        place = self.image.read_bytes().index(song[:512])
        with open(self.image, "r+b") as card:
            card.seek(place)
            card.write(b"Written later. " * 273)


class Guide:
    def __init__(self, screen, stage, program, shots, language, reads):
        self.screen, self.stage, self.program, self.shots, self.language = screen, stage, program, shots, language
        self.reads = reads  # the library that makes reads fail
        self.folder = stage.folder
        self.words = Wording(program.parent / "Languages", "English")
        # Those of the language that the first start chooses in the menu.
        self.own_words = self.words if language == "English" else Wording(program.parent / "Languages", language)
        self.card = Card(self.folder)
        self.process = None
        # Its path is seen in pictures, and is the same in each run.
        self.kept = pathlib.Path(tempfile.gettempdir()) / "recovered"
        self.kept.mkdir()

    def leave(self):
        self.end_program()
        self.card.stick.detach()
        shutil.rmtree(self.kept)

    def start_program(self, bad_bytes=0):
        environment = os.environ | {
            "LD_PRELOAD": str(self.reads),
            "FAILING_PATH": self.card.stick.device,
            "FAILING_FROM": str(self.card.bad_from),
            "FAILING_TO": str(self.card.bad_from + bad_bytes),
            "FAILING_SPEED": str(READING_SPEED),
        }
        self.process = self.stage.start([self.program], cwd=self.folder, env=environment)
        self.screen.wait("frame", MAIN, states=["active"])
        self.screen.wait("push button", self.words.button("BtnRecoverMode"))
        if self.words is not self.own_words:
            self.choose_language(LANGUAGES[self.language])

    def end_program(self):
        if self.process is not None:
            self.process.terminate()
            self.process.wait(SCAN_SECONDS)
            self.process = None

    def choose_language(self, name):
        self.screen.click("push button", "Menu")
        self.screen.click("menu item", self.words.text("MenuWnd", "item_language"))
        self.screen.click("menu item", name)
        self.screen.wait_gone("menu item")
        self.words = self.own_words
        self.screen.wait("push button", self.words.button("BtnRecoverMode"))

    def shot(self, name):
        """The windows that are shown, without the empty screen around them, in few colours."""
        time.sleep(DRAWN_AFTER_SECONDS)
        path = self.shots / f"{name}.png"
        picture_of(path)
        reduce = ["-trim", "+repage", "+dither", "-colors", str(COLOURS), "-strip", f"PNG8:{path}"]
        subprocess.run(["convert", str(path), *reduce], check=True)
        subprocess.run(["optipng", "-quiet", "-o2", str(path)], check=True)
        print(f"  {path.name}", flush=True)

    def press(self, key, **more):
        self.screen.click("push button", self.words.button(key), **more)

    def answer(self, section="MessageBox", key="okbtn"):
        self.screen.click("push button", self.words.text(section, key), widths=BUTTON_WIDTHS)

    def give_path(self, path):
        field = self.screen.wait("text", re.compile(r"^(File name|Directory|Dateiname|Ordner|Verzeichnis):$"), states=["focused"])
        self.screen.key("ctrl+a")
        self.screen.type(path)
        time.sleep(DRAWN_AFTER_SECONDS)
        self.screen.key("Return")
        self.screen.wait_gone("text", field.name)

    def told(self, section, key):
        """Waits for a sentence of a box; values in it may be any."""
        parts = re.split(PLACEHOLDER, self.words.text_as_it_stands(section, key).replace("%%", "%"))
        self.screen.wait("label", re.compile(".+".join(map(re.escape, parts))), seconds=SCAN_SECONDS)

    def choose_card(self):
        self.screen.click("table cell", re.compile(CARD_LABEL), seconds=DEVICE_SECONDS)
        self.screen.wait("label", f"{self.words.message('MSG0204')} {CARD_LABEL}")

    def wait_for_results(self):
        self.screen.wait("label", self.words.message("MSG0801"), seconds=SCAN_SECONDS)
        self.screen.wait_gone("dialog", seconds=SCAN_SECONDS)
        time.sleep(TOLD_AFTER_SECONDS)

    def restore_to(self, folder, report, done=None):
        folder.mkdir()
        self.press("BtnRecover")
        self.screen.wait("dialog", self.words.text("Desktop", "DSK0103"))
        self.give_path(folder)
        self.screen.wait("push button", self.words.text("RecoverProcessWnd", "OpenBtn"), seconds=SCAN_SECONDS)
        if done is not None:
            self.shot(done)
        self.screen.click("push button", self.words.text("RecoverProcessWnd", "DetailBtn"))
        self.shot(report)
        self.screen.click("push button", self.words.text("RecoverProcessWnd", "FinishBtn"), widths=BUTTON_WIDTHS)
        self.screen.wait_gone("dialog")


def beginning_of(text):
    return "^" + re.escape(re.split(PLACEHOLDER, text)[0])


def card_in_the_reader(guide):
    guide.start_program()
    guide.shot("start")
    guide.press("BtnRecoverMode")
    guide.choose_card()
    guide.shot("drives")
    guide.press("BtnScan")
    guide.screen.wait("push button", guide.words.text("ScanWnd", "cancelbtn"), states=["focused"], seconds=SCAN_SECONDS)
    time.sleep(3)
    guide.shot("scan")
    guide.wait_for_results()
    rows = [item for item in guide.screen.all("table cell", re.compile(r"\.jpg$")) if item.width > MARK_WIDTHS[1]]
    if len(rows) < len(SCENES):
        raise NotSeen(f"{len(rows)} photos are listed")
    guide.screen.click("check box", re.compile(beginning_of(guide.words.text_as_it_stands("Extras", "EXT0103"))))
    guide.screen.click("table column header", "All")
    guide.shot("results")
    guide.restore_to(guide.kept / "pictures", "restore-report", "restore-done")
    guide.screen.click("table cell", re.compile(r"^MP3"))
    song = guide.screen.wait("table cell", "Song by the fire.mp3", widths=BUTTON_WIDTHS)
    guide.screen.point_at(song, (90, 12))
    time.sleep(TOLD_AFTER_SECONDS)
    guide.shot("lost-beginning")
    guide.end_program()


def only_some_types(guide):
    guide.start_program()
    guide.press("BtnRecoverMode")
    guide.choose_card()
    guide.press("BtnAdvanceScan")
    guide.screen.wait("label", guide.words.message("MSG0601"))
    for block in ("Audio", "Videos"):  # as assistive software names them in every language
        guide.screen.click("check box", block)
    guide.shot("types")
    guide.press("BtnScan")
    guide.told("Messages", "MSG1206")
    guide.shot("earlier-scan")
    guide.answer()
    guide.wait_for_results()
    guide.screen.click("table cell", re.compile(r"^JPG"))
    guide.screen.click("check box", guide.words.text("Extras", "EXT0301"))
    time.sleep(TOLD_AFTER_SECONDS)
    guide.shot("small-pictures")
    guide.end_program()


def disk_that_fails(guide):
    guide.start_program(BAD_BYTES)
    guide.press("BtnCreateImageMode")
    guide.choose_card()
    guide.shot("create-image")
    guide.screen.click("push button", guide.words.button("BtnCreateImage"))
    guide.give_path(guide.kept / "card.img")
    guide.told("Messages", "MSG0217")
    guide.answer()
    guide.told("Extras", "EXT0207")
    guide.shot("rescue-offer")
    guide.answer()
    guide.screen.wait("label", re.compile(re.escape(guide.words.text("Extras", "EXT0217"))))
    time.sleep(3)
    guide.shot("rescue")
    guide.told("Extras", "EXT0221")
    guide.shot("rescue-end")
    guide.answer()
    guide.told("Messages", "MSG0214")
    guide.answer()
    guide.screen.wait("label", guide.words.message("MSG0601"))
    guide.press("BtnScan")
    guide.told("Desktop", "DSK0114")
    guide.shot("unread-sectors")
    guide.answer()
    guide.wait_for_results()
    guide.screen.click("table cell", re.compile(r"^AVI"))
    guide.screen.click("table column header", "All")
    guide.restore_to(guide.kept / "rescued", "damaged-report")
    guide.end_program()


ROADS = [card_in_the_reader, only_some_types, disk_that_fails]
