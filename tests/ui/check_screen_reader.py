#!/usr/bin/python3
"""What a screen reader finds in the windows: check_screen_reader.py KORVEX SAMPLES

Opens the program KORVEX on a copy of the campaign in the folder SAMPLES, on the display and the
session bus of the environment, uses it through the accessibility bus and the keyboard as readers and
their users do, and checks what the bus tells of it.
"""
import os
import shutil
import subprocess
import sys
import tempfile
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

KEYS = {"Left": 0xFF51, "Up": 0xFF52, "Right": 0xFF53, "Down": 0xFF54, "Return": 0xFF0D,
        "Escape": 0xFF1B, "F10": 0xFFC7}
failures = []


def check(what, holds):
    if not holds:
        failures.append(what)


def children(node):
    return [child for child in map(node.get_child_at_index, range(node.get_child_count())) if child]


def below(node):
    """The node and all that it contains, in order."""
    yield node
    for child in children(node):
        yield from below(child)


def has(node, state):
    return node.get_state_set().contains(getattr(Atspi.StateType, state))


def wait_for(what, find):
    """What `find` returns, as soon as that is something. Windows come and go meanwhile."""
    end = time.monotonic() + 20
    while time.monotonic() < end:
        try:
            found = find()
            if found:
                return found
        except GLib.Error:
            pass
        time.sleep(0.05)
        Atspi.get_desktop(0).clear_cache()
    sys.exit(f"waited in vain for {what}; before that: {failures}")


def find(window, role, name=None):
    return wait_for(f"{role} {name}", lambda: next(
        (node for node in below(window) if node.get_role_name() == role and
         name in (None, node.get_name()) and has(node, "SHOWING")), None))


def window(role, title, description=""):
    return wait_for(f"{role} {title} {description}", lambda: next(
        (window for program in children(Atspi.get_desktop(0)) for window in children(program)
         if window.get_role_name() == role and window.get_name().startswith(title) and
         description in window.get_description()), None))


def press(*keys):
    for key in keys:
        Atspi.generate_keyboard_event(KEYS.get(key) or ord(key), None, Atspi.KeySynthType.SYM)


# By the keyboard, since a program does not answer while the action of a control shows a dialog.
def use(node):
    node.get_component_iface().grab_focus()
    press(" ")


def items(table):
    """The texts of a list or a tree. A cell with a picture holds a nameless one for that."""
    return [node.get_name() for node in below(table)
            if node.get_role_name() == "table cell" and node.get_name()]


def check_names(window):
    for node in below(window):
        role = node.get_role_name()
        # The cells of lists are named by their texts, which the callers compare.
        if role != "table cell" and has(node, "FOCUSABLE") and has(node, "SHOWING"):
            check(f"a {role} without a name in {window.get_name()}", node.get_name())


def check_tree(main, folder):
    """Every folder on the way, and what the keys do."""
    tree = find(main, "tree table", "Folders")
    campaign, sets = os.path.basename(folder), sorted(os.listdir(folder))
    shown = items(tree)
    at = shown.index(campaign)
    check(f"folders {shown}", set(folder.split("/")[1:]) < set(shown) and shown[0] == "/" and
          shown[at + 1:at + 1 + len(sets)] == sets)
    tree.get_component_iface().grab_focus()

    def is_item(name, state):
        return any(node.get_name() == name and has(node, state) for node in below(tree))

    def after(key, result):
        press(key)
        wait_for(f"the tree after {key}", result)

    for close, reopen in (("Left", "Right"), ("-", "+"), ("Return", "Return")):
        after(close, lambda: sets[0] not in items(tree))
        after(reopen, lambda: is_item(campaign, "EXPANDED") and sets[0] in items(tree))
    after("Right", lambda: is_item(sets[0], "SELECTED"))
    after("Down", lambda: is_item(sets[1], "SELECTED"))
    after("Right", lambda: not is_item(sets[1], "EXPANDABLE"))  # nothing is in there
    after("Up", lambda: is_item(sets[0], "SELECTED"))
    check_files(main, os.path.join(folder, sets[0]))
    tree.get_component_iface().grab_focus()
    after("Left", lambda: is_item(campaign, "SELECTED"))


def check_files(main, folder):
    use(find(main, "radio button", "Process the selected files."))
    files = find(main, "table", "Files")
    wait_for("the files", lambda: items(files) == sorted(os.listdir(folder)))
    check_names(main)
    use(find(main, "radio button", "Process Sub-Folders of this folder:"))
    wait_for("no file", lambda: not items(files))


def check_go_to(main):
    press("F10", "Down", "Right", "g")
    check_names(window("frame", "Go to Folder"))
    press("Escape")
    wait_for("the main window", lambda: has(main, "ACTIVE"))


def check_options(main):
    press("F10", "Down", "o")
    options = window("frame", "KORVEX - Options")
    check_names(options)
    find(options, "page tab list").get_selection_iface().select_child(1)
    available = find(options, "table", "Available Columns")
    check_names(options)
    keys = find(options, "table", "Columns that comprise the key")
    columns = items(available)
    check(f"columns {columns}", columns[:3] == ["Filename", "Date", "day_num"] and
          set(items(keys)) < set(columns))
    choices = [node.get_name() for node in below(find(options, "combo box", "Data Column"))
               if node.get_role_name() == "menu item"]
    check(f"data columns {choices}", choices == columns)
    available.get_component_iface().grab_focus()
    press("Down", " ")
    use(find(options, "push button", "Add to the key"))
    wait_for("one more key", lambda: len(items(keys)) == 4)
    press("Escape")  # nothing is stored
    wait_for("the main window", lambda: has(main, "ACTIVE"))


def check_messages(main):
    """Messages are read out as a whole: alerts with their texts as descriptions."""
    use(find(main, "push button", "Run!"))
    for text in ("Process finished!", "18 readings are lacking"):
        message = window("alert", "KORVEX", text)
        check_names(message)
        wait_for("the focus", lambda: has(find(message, "push button", "OK"), "FOCUSED"))
        press("Return")
    find(main, "label", "Ready")


def main():
    program, samples = sys.argv[1:]
    with tempfile.TemporaryDirectory() as work:
        folder = os.path.join(work, "campaign")
        shutil.copytree(os.path.join(samples, "campaign"), folder)
        for name in ("CONFIG", "CACHE", "STATE"):
            os.environ[f"XDG_{name}_HOME"] = os.path.join(work, name)
        os.makedirs(os.path.join(work, "CONFIG/korvex"))
        with open(os.path.join(samples, "korvex.ini"), encoding="utf-8") as given:
            settings = given.read().replace("[Main Section]", f"[Main Section]\nLast Path={folder}")
        with open(os.path.join(work, "CONFIG/korvex/korvex.ini"), "w", encoding="utf-8") as file:
            file.write(settings)
        korvex = subprocess.Popen([program])
        try:
            main_window = window("frame", "KORVEX ")
            check("drive", find(main_window, "combo box", "Drive"))
            check("progress", find(main_window, "progress bar", "Progress"))
            check_tree(main_window, folder)
            check_go_to(main_window)
            check_options(main_window)
            check_messages(main_window)
        finally:
            korvex.kill()
            korvex.wait()
    if failures:
        sys.exit("\n".join(failures))


main()
