"""The texts that the program shows, from its language files, and how it writes sizes."""
import pathlib
import re

PLACEHOLDER = re.compile(r"%[sdc]")


class Wording:
    def __init__(self, folder, language):
        self._texts = {}
        section = ""
        for line in (pathlib.Path(folder) / f"{language}.ini").read_text(encoding="utf-8-sig").splitlines():
            if line.startswith("["):
                section = line.strip("[]")
            elif "=" in line and not line.startswith(";"):
                key, text = line.split("=", 1)
                self._texts[section, key] = text

    def text(self, section, key, *values):
        """With the values in the places that the text has for them."""
        values = iter(values)
        return PLACEHOLDER.sub(lambda place: str(next(values)), self._texts[section, key]).replace("%%", "%")

    def text_as_it_stands(self, section, key):
        return self._texts[section, key]

    def button(self, key):
        return self.text("MainWnd", key)

    def message(self, key, *values):
        return self.text("Messages", key, *values)


def size_text(count):
    for unit, name in ((1 << 30, "GB"), (1 << 20, "MB"), (1 << 10, "KB")):
        if count >= unit:
            return f"{count / unit:.2f} {name}"
    return f"{count} Bytes"
