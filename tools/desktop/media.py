"""Cards with files that were deleted, made by the ordinary tools for pictures, sound, films and file systems."""
import os
import subprocess

MANY_COLOURS = "plasma:red-blue"

# How each file is made; the path comes last.
RECIPES = {
    "Harbour at dusk.jpg": ["convert", "-size", "900x600", "-seed", "7", MANY_COLOURS, "-quality", "88"],
    "Old town gate.jpg": ["convert", "-size", "640x480", "-seed", "8", "plasma:green-yellow", "-quality", "80"],
    "Garden plan.png": ["convert", "-size", "320x240", "-seed", "9", "plasma:navy-white"],
    "Morning bell.mp3": ["ffmpeg", "-f", "lavfi", "-i", "sine=440:duration=3", "-b:a", "64k"],
    "Boat trip.avi": ["ffmpeg", "-f", "lavfi", "-i", "testsrc=size=160x120:rate=2:duration=60", "-c:v", "mpeg4"],
}


def run(*command):
    subprocess.run(
        [str(word) for word in command], check=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE
    )


def make_files(folder):
    """The files by name, as bytes."""
    folder.mkdir()
    for name, recipe in RECIPES.items():
        run(*recipe, folder / name)
    return {name: (folder / name).read_bytes() for name in RECIPES}


def make_card(image, folder, label, megabytes, cluster_sectors=1):
    """A FAT32 volume to which the files of the folder were copied and then deleted."""
    with open(image, "wb") as card:
        card.truncate(megabytes << 20)
    run("mkfs.fat", "-F", "32", "-s", cluster_sectors, "-n", label, image)
    for name in RECIPES:
        run("mcopy", "-i", image, folder / name, f"::/{name}")
    for name in RECIPES:
        run("mdel", "-i", image, f"::/{name}")


class Stick:
    """An image as a disk of the system, where that is allowed."""

    def __init__(self, image):
        self.device = None
        if os.geteuid() != 0:
            self.why_not = "only root can attach loop devices"
            return
        attached = subprocess.run(
            ["losetup", "--find", "--show", "--read-only", str(image)], capture_output=True, text=True, check=False
        )
        self.why_not = attached.stderr.strip()
        if attached.returncode == 0:
            self.device = attached.stdout.strip()

    def detach(self):
        if self.device is not None:
            subprocess.run(["losetup", "--detach", self.device], check=False)
            self.device = None
