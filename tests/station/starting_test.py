"""What the program does between its start and its event loop, and after it."""

import os
import re
import subprocess
import unittest
from unittest.mock import patch

from station import BUILD, PROGRAMS, Display, Home, Program, Station, free_port, wait_for

FONT_RULES = """<?xml version="1.0"?>
<fontconfig><dir>/usr/share/fonts</dir><cachedir>{cache}</cachedir>
<match target="scan"><test name="family"><string>DejaVu Sans Mono</string></test>
<edit name="family" mode="assign"><string>{name}</string></edit></match></fontconfig>"""

# Family, points, pixels, style hint, weight, style and so on.
BOLD_DESKTOP_FONT = """[General]
font=DejaVu Serif,14,-1,5,75,1,0,0,0,0
"""

ICON_THEME = """[Icon Theme]
Name=hicolor
Directories=48,96
[48]
Size=48
[96]
Size=96
"""


def size(display, window):
    shown = display.run("xwininfo", "-id", window)
    return tuple(int(re.search(rf"{side}: (\d+)", shown)[1]) for side in ("Width", "Height"))


def double_resolution(display):
    display.run("xprop", "-root", "-f", "RESOURCE_MANAGER", "8s",
                "-set", "RESOURCE_MANAGER", "Xft.dpi:\t192\n")


class Starting(unittest.TestCase):
    def width_of_text_where_the_wide_font_is(self, name):
        with Home() as home, Display(home) as display:
            rules = home.path / "fonts.conf"
            rules.write_text(FONT_RULES.format(cache=home.path / "fonts", name=name))
            with patch.dict(os.environ, FONTCONFIG_FILE=str(rules)), \
                    Station(home, display) as station:
                return size(display, station.open_view(2, "PELQ Kiwi Outpost Bridge Status"))[0]

    def test_texts_are_in_the_preferred_font(self):
        self.assertGreater(self.width_of_text_where_the_wide_font_is("Segoe UI"),
                           self.width_of_text_where_the_wide_font_is("Another"))

    def test_texts_are_upright_and_of_normal_weight_also_where_the_desktops_font_is_not(self):
        with Home() as home, Display(home) as display:
            (home.path / "kdeglobals").write_text(BOLD_DESKTOP_FONT)
            environment = {**home.environment(display.name), "KDE_SESSION_VERSION": "5",
                           "QT_QPA_PLATFORMTHEME": "kde", "XDG_CONFIG_DIRS": str(home.path)}
            result = subprocess.run([BUILD / "tests" / "app_stationfont", "--describe"],
                                    env=environment, text=True, stdout=subprocess.PIPE,
                                    timeout=60, check=True)
            self.assertEqual(result.stdout, "DejaVu Serif|12|50|0")

    def test_the_window_has_the_programs_icon(self):
        with Home() as home, Display(home) as display, Station(home, display) as station:
            shown = display.run("xprop", "-len", "1000000", "-id", station.window(), "_NET_WM_ICON")
            sides = re.findall(r"Icon \((\d+) x (\d+)\)", shown)
            self.assertEqual(sides, [(str(side), str(side))
                                     for side in (16, 24, 32, 48, 64, 128, 256)])

    def test_a_display_of_double_resolution_shows_everything_twice_as_large(self):
        with Home() as home, Display(home) as display:
            double_resolution(display)
            with Station(home, display) as station:
                self.assertEqual(size(display, station.window()), (690, 490))

    def test_a_display_of_double_resolution_shows_icons_in_full_detail(self):
        with Home() as home, Display(home) as display:
            double_resolution(display)
            icons = home.path / ".icons" / "hicolor"
            for side, colour in (("48", "red"), ("96", "lime")):
                (icons / side).mkdir(parents=True)
                display.run("convert", "-size", f"{side}x{side}", f"xc:{colour}",
                            icons / side / "dialog-information.png")
            (icons / "index.theme").write_text(ICON_THEME)
            with Station(home, display):
                display.press("alt+s", "Up", "Up", "Right", "Up", "Return")
                box = display.window("WSJT Bridge Status")
                picture = home.path / "box.png"

                def colours():
                    display.run("import", "-window", box, picture)
                    shown = display.run("convert", picture, "-format", "%c", "histogram:info:-")
                    return re.findall(r"\b(?:red|lime)\b", shown)
                self.assertEqual(wait_for(colours, "painted icon"), ["lime"])

    def test_the_exit_status_is_the_result_of_the_event_loop(self):
        plugins = {"QT_PLUGIN_PATH": str(BUILD / "tests" / "plugins"),
                   "QT_QPA_GENERIC_PLUGINS": "loopender"}
        with Home() as home, patch.dict(os.environ, plugins):
            home.write_profile(BridgePort=free_port())
            with Program([PROGRAMS / "kiwi-outpost"], home.environment(None)) as program:
                self.assertEqual(program.exit_status(60), 7)


if __name__ == "__main__":
    unittest.main()
