"""The steps of a visit to the program, from the first window to its end. Each is a function of the visit, in STEPS' order."""
import re
import subprocess

import media
from screen import NotSeen, Wanted, colours_of, picture_of
from wording import Wording, size_text

MAIN = "Orvanta Lumivault"
IMAGE_MEGABYTES = 2048  # with holes: scanned long enough to be seen
LONG_IMAGE_MEGABYTES = 12288  # and long enough to be stopped in the middle
STICK_MEGABYTES = 49
STICK_SIZE = r"4[789]\.\d\d MB"  # what its file system gives to files
STICK_LABEL = "TRYSTICK"
SCAN_SECONDS = 120
DEVICE_SECONDS = 30
END_SECONDS = 15
PICTURE_COLOURS = 300  # more than any text in any colour has
NAME_WIDTHS = (50, 2000)  # what tells a cell with a name from that with the mark, and a button with a text from the cross
MARK_WIDTHS = (1, 49)
CATEGORY_BOX = (34, 14)  # where the tick of a node of the first level is
PHOTOS = [name for name in media.RECIPES if name.endswith(("jpg", "png"))]


class Visit:
    def __init__(self, screen, stage, program, shots):
        self.screen, self.stage, self.program, self.shots = screen, stage, program, shots
        self.folder = stage.folder
        self.words = Wording(program.parent / "Languages", "English")
        self.step = "preparing"
        self.stick = None
        self._shot_count = 0
        self.files = media.make_files(self.folder / "originals")
        self.image = self.folder / "card.img"
        media.make_card(self.image, self.folder / "originals", "HOLIDAY", IMAGE_MEGABYTES, cluster_sectors=8)
        self.process = stage.start([program], cwd=self.folder)

    def leave(self):
        if self.stick is not None:
            self.stick.detach()

    def shot(self, name):
        self._shot_count += 1
        picture_of(self.shots / f"{self._shot_count:02}-{name.replace(' ', '-')}.png")

    def press(self, key, **more):
        """Clicks a button of the main window by the key of its text."""
        self.screen.click("push button", self.words.button(key), **more)

    def answer_dialog(self, path):
        """Types a path into the file dialog that is open, and waits until it is gone."""
        field = self.screen.wait("text", re.compile(r"^(File name|Directory):$"), states=["focused"])
        self.screen.key("ctrl+a")
        self.screen.type(path)
        self.screen.wait_until(f"{path} in the field", lambda seen: text_of(field.node) == str(path))
        self.screen.key("Return")
        self.screen.wait_gone("text", field.name)

    def wait_for_results(self, first_node):
        """Until the first picture is shown too: while it is fetched, the program takes no clicks."""
        self.screen.wait("table cell", first_node, seconds=SCAN_SECONDS)
        self.screen.wait_gone("dialog")
        return self.wait_for_picture("a picture of the first row in the preview", lambda picture: True)

    def wait_for_picture(self, what, is_it):
        pane = self.screen.wait("text", "Preview")
        shown = self.folder / "pane.png"

        def is_shown(_):
            picture_of(shown, pane)
            return colours_of(shown) > PICTURE_COLOURS and is_it(shown.read_bytes())

        self.screen.wait_until(what, is_shown)
        return shown.read_bytes()

    def wait_for_player(self, what, holds):
        """One that plays a file of this home, by the name that the program starts it under."""
        home = str(self.stage.home)
        self.screen.wait_until(what, lambda _: holds([line for line in processes() if line.startswith("Player") and home in line]))

    def expect_selected(self, names):
        total = sum(len(self.files[name]) for name in names)
        text = self.words.message("MSG0804", size_text(total), len(names)) if names else self.words.message("MSG0803")
        self.screen.wait("label", text)

    def restore_to(self, folder, names):
        """Recovers what is ticked, reads the report, and compares every byte."""
        folder.mkdir()
        self.press("BtnRecover")
        self.screen.wait("dialog", self.words.text("Desktop", "DSK0103"))
        self.shot(f"folder-{folder.name}")
        self.answer_dialog(folder)
        self.screen.wait("label", self.words.message("MSG1102", len(names), len(names), len(names), 0))
        self.shot(f"recovered-{folder.name}")
        self.screen.click("push button", self.words.text("RecoverProcessWnd", "DetailBtn"))
        restored = {path.name: path for path in folder.rglob("*") if path.is_file()}
        for name in names:
            assert name in restored, f"{name} was not restored; there is {sorted(restored)}"
            row = self.screen.wait("table cell", str(restored[name]))
            self.screen.wait("table cell", self.words.text("Desktop", "DSK0204"), beside=row)
            assert restored[name].read_bytes() == self.files[name], f"{name} is not what was deleted"
        assert len(restored) == len(names), f"restored are {sorted(restored)}"
        self.shot(f"report-{folder.name}")
        self.screen.click("push button", self.words.text("RecoverProcessWnd", "FinishBtn"), widths=NAME_WIDTHS)
        self.screen.wait_gone("dialog")


def text_of(node):
    count = node.get_text_iface().get_character_count()
    return node.get_text_iface().get_text(0, count)


def windows_of(kind):
    """The windows that a program of that class shows."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", kind], capture_output=True, text=True, check=False)
    return found.stdout.split()


def processes():
    return subprocess.run(["ps", "-eww", "-o", "args="], capture_output=True, text=True, check=True).stdout.splitlines()


def check(holds, sentence):
    if not holds:
        raise NotSeen(sentence)


def first_window(visit):
    screen, words = visit.screen, visit.words
    screen.wait("frame", MAIN, states=["active"])
    screen.wait("label", words.button("MainTitle"))
    screen.point_at(screen.wait("push button", words.button("BtnCreateImageMode")))
    screen.wait("label", words.message("MSG0102"))
    screen.point_at(screen.wait("push button", words.button("BtnRecoverMode")))
    screen.wait("label", words.message("MSG0101"))
    visit.shot("first-window")


def image_opened(visit):
    screen, words = visit.screen, visit.words
    visit.press("BtnRecoverMode")
    screen.wait("label", words.message("MSG0501"))
    screen.wait("radio button", words.button("TabRecover"), without=["enabled"])
    visit.shot("drives")
    visit.press("BtnLoadImage")
    screen.wait("text", "File name:", states=["focused"])
    visit.shot("open-dialog")
    visit.answer_dialog(visit.image)
    row = screen.click("table cell", visit.image.name)
    screen.wait("table cell", size_text(IMAGE_MEGABYTES << 20), beside=row)
    screen.wait("label", f"{words.message('MSG0209')} {visit.image.name}")
    screen.wait("label", f"{words.message('MSG0210')} {size_text(IMAGE_MEGABYTES << 20)}")
    visit.shot("image-row")


def image_scanned(visit):
    screen, words = visit.screen, visit.words
    visit.press("BtnScan")
    cancel = Wanted("push button", words.text("ScanWnd", "cancelbtn"), states=["focused"])
    done = Wanted("table cell", "Photos (3)")
    seen = screen.wait_until(
        f"{cancel}, or {done}", lambda seen: [item for item in seen if cancel.fits(item) or done.fits(item)], SCAN_SECONDS
    )
    if cancel.fits(seen[0]):
        visit.shot("scanning")
    visit.wait_for_results("Photos (3)")
    for node in ("JPG (2)", "PNG (1)", "Audio (1)", "MP3 (1)", "Videos (1)", "AVI (1)"):
        screen.wait("table cell", node)
    screen.wait("label", words.message("MSG0802", len(visit.files)))
    screen.wait("radio button", words.button("TabRecover"), states=["checked"])
    visit.expect_selected([])
    screen.wait("push button", words.button("BtnRecover"), without=["enabled"])
    visit.shot("results")
    return None if cancel.fits(seen[0]) else "the window of the scan was gone too soon to be seen"


def picture_previewed(visit):
    screen = visit.screen
    first = visit.wait_for_picture("a picture of the first row in the preview", lambda picture: True)
    screen.click("table cell", "Old town gate.jpg", widths=NAME_WIDTHS)
    screen.wait("table cell", "Old town gate.jpg", states=["selected"])
    visit.wait_for_picture("another picture in the preview", lambda picture: picture != first)
    visit.shot("preview")


def clip_played(visit):
    """The player comes with the clip that is chosen, and goes with the next choice."""
    screen = visit.screen
    screen.click("table cell", "AVI (1)")
    screen.click("table cell", "Boat trip.avi", widths=NAME_WIDTHS)
    visit.wait_for_player("the player", lambda running: running)
    screen.wait_until("the window of the player", lambda _: windows_of("mpv"))
    visit.shot("clip")
    screen.click("table cell", "JPG (2)")
    screen.click("table cell", "Harbour at dusk.jpg", widths=NAME_WIDTHS)
    visit.wait_for_player("the end of the player", lambda running: not running)
    visit.wait_for_picture("a picture again in the preview", lambda picture: True)


def ticked(visit):
    """A row, the header, the tree by the mouse, and the tree by the space key."""
    screen = visit.screen
    jpgs = ["Harbour at dusk.jpg", "Old town gate.jpg"]
    screen.click("table cell", "Old town gate.jpg", widths=MARK_WIDTHS)
    visit.expect_selected(["Old town gate.jpg"])
    visit.shot("row-ticked")
    screen.click("table column header", "All")
    visit.expect_selected(jpgs)
    for name in jpgs:
        screen.wait("table cell", name, states=["checked"])
    screen.wait("table cell", "JPG (2)", states=["checked"])
    visit.shot("header-ticked")
    screen.click("table cell", "Audio (1)", at=CATEGORY_BOX)
    visit.expect_selected([*jpgs, "Morning bell.mp3"])
    screen.wait("table cell", "MP3 (1)", states=["checked"])
    screen.click("table cell", "PNG (1)")
    screen.wait("table cell", "Garden plan.png")
    screen.key("space")
    visit.expect_selected([*jpgs, "Morning bell.mp3", "Garden plan.png"])
    screen.wait("table cell", "Photos (3)", states=["checked"])
    screen.click("table cell", "Videos (1)", at=CATEGORY_BOX)
    visit.expect_selected(list(visit.files))
    screen.click("table cell", "Videos (1)", at=CATEGORY_BOX)
    screen.click("table cell", "Videos (1)", at=CATEGORY_BOX)
    visit.expect_selected(list(visit.files))
    visit.shot("all-ticked")


def image_restored(visit):
    visit.restore_to(visit.folder / "from image", list(visit.files))


def scan_stopped(visit):
    """A scan is stopped in the middle after a question that was first answered with no; the next one goes on with it."""
    screen, words = visit.screen, visit.words
    visit.press("BtnPrev")
    long_image = visit.folder / "long.img"
    media.make_card(long_image, visit.folder / "originals", "LONG", LONG_IMAGE_MEGABYTES, cluster_sectors=32)
    screen.wait("label", words.message("MSG0501"))
    visit.press("BtnLoadImage")
    visit.answer_dialog(long_image)
    screen.click("table cell", long_image.name)
    visit.press("BtnScan")
    for answer in ("cancelbtn", "okbtn"):
        screen.click("push button", words.text("ScanWnd", "cancelbtn"), states=["focused"], seconds=SCAN_SECONDS)
        screen.wait("label", words.message("MSG0709"))
        visit.shot(f"stop-question-{answer}")
        screen.click("push button", words.text("MessageBox", answer), window=words.message("MSG0404"))
    visit.wait_for_results("Photos (3)")
    visit.shot("stopped-results")
    visit.press("BtnPrev")
    screen.wait("label", words.message("MSG0501"))
    screen.click("table cell", long_image.name)
    visit.press("BtnScan")
    screen.wait("label", re.compile(f"^{re.escape(words.message('MSG1206'))} ."), seconds=SCAN_SECONDS)
    visit.shot("resume-question")
    screen.click("push button", words.text("MessageBox", "okbtn"))
    visit.wait_for_results("Photos (3)")
    screen.wait("label", words.message("MSG0802", len(visit.files)))


def stick_scanned(visit):
    """Plugged in while the program runs; only photos are looked for."""
    screen, words = visit.screen, visit.words
    visit.press("BtnPrev")
    screen.wait("label", words.message("MSG0501"))
    source = visit.folder / "stick.img"
    media.make_card(source, visit.folder / "originals", STICK_LABEL, STICK_MEGABYTES)
    visit.stick = media.Stick(source)
    if visit.stick.device is None:
        return f"skipped: {visit.stick.why_not}"
    screen.click("table cell", re.compile(STICK_LABEL), seconds=DEVICE_SECONDS)
    screen.wait("label", f"{words.message('MSG0204')} {STICK_LABEL}")
    screen.wait("label", f"{words.message('MSG0205')} FAT32")
    screen.wait("label", re.compile(f"^{words.message('MSG0206')} {STICK_SIZE}$"))
    visit.shot("stick")
    visit.press("BtnAdvanceScan")
    screen.wait("label", words.message("MSG0601"))
    for block, sample in (("MSG0808", "MP3 (.mp3)"), ("MSG0809", "AVI (.avi)")):
        screen.click("check box", words.button(block))
        screen.wait("check box", sample, without=["checked"])
    visit.shot("file-types")
    visit.press("BtnScan")
    visit.wait_for_results("Photos (3)")
    check(not screen.all("table cell", "Audio (1)"), "audio was found although it was not looked for")
    screen.click("table cell", "Photos (3)", at=CATEGORY_BOX)
    visit.expect_selected(PHOTOS)
    visit.shot("stick-results")
    visit.restore_to(visit.folder / "from stick", PHOTOS)
    return None


def image_made(visit):
    """An image of the stick, compared, opened and scanned."""
    screen, words = visit.screen, visit.words
    for page in ("MSG0601", "MSG0501") if visit.stick.device else ():
        visit.press("BtnPrev")
        screen.wait("label", words.message(page))
    visit.press("BtnPrev")
    screen.wait("label", words.button("MainTitle"))
    visit.press("BtnCreateImageMode")
    screen.wait("label", words.message("MSG0212"))
    screen.wait_gone("table cell", visit.image.name)
    if visit.stick.device is None:
        visit.shot("create-image")
        return f"no copy is made: {visit.stick.why_not}"
    screen.click("table cell", re.compile(STICK_LABEL))
    visit.shot("create-image")
    screen.click("push button", words.button("BtnCreateImage"))
    field = screen.wait("text", "File name:", states=["focused"])
    check(re.search(f"FAT32, {STICK_SIZE}", text_of(field.node)), f"the name proposed is {text_of(field.node)!r}")
    visit.shot("save-dialog")
    made = visit.folder / "made.img"
    visit.answer_dialog(made)
    screen.wait("label", words.message("MSG0214"), seconds=SCAN_SECONDS)
    visit.shot("image-made")
    check(made.read_bytes() == (visit.folder / "stick.img").read_bytes(), "the image is not what the stick holds")
    screen.click("push button", words.text("MessageBox", "okbtn"))
    screen.wait("label", words.message("MSG0601"))
    visit.press("BtnScan")
    visit.wait_for_results("Photos (3)")
    visit.shot("made-image-results")
    return None


def stick_pulled(visit):
    """Its row goes by itself, those of the images stay."""
    screen, words = visit.screen, visit.words
    if visit.stick.device is None:
        return f"skipped: {visit.stick.why_not}"
    for page in ("MSG0601", "MSG0501"):
        visit.press("BtnPrev")
        screen.wait("label", words.message(page))
    screen.wait("table cell", re.compile(STICK_LABEL))
    visit.stick.detach()
    screen.wait_gone("table cell", re.compile(STICK_LABEL), seconds=DEVICE_SECONDS)
    screen.wait("table cell", "made.img")
    visit.shot("stick-pulled")
    return None


def language_changed(visit):
    screen = visit.screen
    choose_language(visit, "Deutsch")
    german = Wording(visit.program.parent / "Languages", "German")
    screen.wait("push button", german.button("BtnPrev"))
    for tab in (german.message("MSG0503"), german.button("TabFileType"), german.button("TabRecover")):
        screen.wait("radio button", tab)
    visit.shot("german")
    visit.words = german
    choose_language(visit, "English")
    visit.words = Wording(visit.program.parent / "Languages", "English")
    screen.wait("push button", visit.words.button("BtnPrev"))


def choose_language(visit, name):
    screen, words = visit.screen, visit.words
    screen.click("push button", "Menu")
    screen.click("menu item", words.text("MenuWnd", "item_language"))
    screen.wait("menu item", name)
    visit.shot(f"languages-{name}")
    screen.click("menu item", name)
    screen.wait_gone("menu item")


def second_start(visit):
    screen = visit.screen
    screen.click("push button", "Minimize")
    screen.wait_gone("frame", MAIN, states=["active"])
    second = visit.stage.start([visit.program], cwd=visit.folder)
    try:
        status = second.wait(END_SECONDS)
    except subprocess.TimeoutExpired:
        raise NotSeen(f"a second start was still there after {END_SECONDS} s") from None
    check(status == 0, f"a second start ended with {status}")
    screen.wait("frame", MAIN, states=["active", "showing"])
    visit.shot("second-start")


def about_box(visit):
    screen, words = visit.screen, visit.words
    screen.click("push button", "Menu")
    screen.wait("menu item", words.text("MenuWnd", "item_exit"))
    visit.shot("menu")
    screen.click("menu item", words.text("MenuWnd", "item_about"))
    screen.wait("label", re.compile(r"^Orvanta Lumivault \d+\.\d+"))
    visit.shot("about")
    screen.key("Escape")
    screen.wait_gone("dialog")


def closed(visit):
    visit.screen.click("push button", "Close", window=MAIN)
    try:
        status = visit.process.wait(END_SECONDS)
    except subprocess.TimeoutExpired:
        raise NotSeen(f"the program was still there {END_SECONDS} s after its window was closed") from None
    check(status == 0, f"the program ended with {status}")
    left = [path for path in visit.stage.home.rglob("tmp.*")]
    check(not left, f"left behind: {left}")


Visit.STEPS = [
    first_window,
    image_opened,
    image_scanned,
    picture_previewed,
    clip_played,
    ticked,
    image_restored,
    scan_stopped,
    stick_scanned,
    image_made,
    stick_pulled,
    language_changed,
    second_start,
    about_box,
    closed,
]
