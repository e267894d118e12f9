"""The notification daemons that the demonstration knows, and how their buttons are pressed in the display's upper right
corner."""

import glob
import re

DUNST = """[global]
origin = top-right
offset = 10x10
width = 340
font = Sans 11
max_icon_size = 96
mouse_left_click = context
dmenu = {menu}
"""


class Xfce:
    """It draws buttons below the text; the last one, which is pressed, in the window's lower right corner."""

    def __init__(self, desk):
        self.desk = desk
        found = glob.glob("/usr/lib/*/xfce4/notifyd/xfce4-notifyd")
        desk.start("daemon", *(found or ["xfce4-notifyd"])[:1])

    def press(self, _button):
        place = self.desk.run("xdotool", "search", "--onlyvisible", "--class", "xfce4-notifyd", "getwindowgeometry", "--shell")
        if place:
            x, y, width, height = (int(re.search(rf"^{name}=(\d+)", place, re.M).group(1))
                                   for name in ("X", "Y", "WIDTH", "HEIGHT"))
            self.desk.do("mousemove", str(x + width - 60), str(y + height - 32), "click", "1")


class Dunst:
    """A click brings up a menu of the buttons, which is the user's own program: here one that takes the line that it
    was told."""

    def __init__(self, desk):
        self.desk, self.choice = desk, desk.write("choice", "")
        menu = desk.write("menu", f"#!/bin/sh\nexec grep -F \"$(cat '{self.choice}')\"\n")
        desk.start("daemon", "dunst", "-config", desk.write("dunstrc", DUNST.format(menu=f"/bin/sh {menu}")))

    def press(self, button):
        self.desk.write("choice", button)
        self.desk.do("mousemove", "630", "50", "click", "1")


DAEMONS = {"xfce4-notifyd": Xfce, "dunst": Dunst}
