"""What the tests of the dialogs share: somebody who answers them by keyboard or by screen reader."""

import time

from helper_program import PAIRING_WAIT
from menu_stage import MenuStage, PanelStage
from private_desktop import wait_until
from screen_reader import PROGRAM, ScreenReader

# How a button is pressed that is the first, the second or the last one, other than by a screen reader.
KEYS = {"first": ("Return",), "second": ("Tab", "space"), "last": ("Escape",)}


class ReaderStage(MenuStage):
    """With a screen reader."""

    def setUp(self):
        super().setUp()
        self.reader = ScreenReader(self.desktop)

    def answer(self, name, buttons, how, picture=None):
        """Presses a button of the alert of this name: `how` is the button's text for the screen
        reader, or keys. What the alert says."""
        alert = self.reader.alert(name)
        self.assertEqual(list(alert.buttons), buttons)
        self.assertEqual(alert.texts[0], name)
        open_alert = self.quiet_alert if name == PROGRAM else self.alert
        if picture:
            open_alert(picture)

        def is_gone():
            return name not in [other.name for other in self.reader.alerts()]

        if isinstance(how, str):
            alert.buttons[how].press()
            wait_until(is_gone, "the alert's end")
        else:
            window = open_alert()
            if name == PROGRAM:
                self.give_keyboard(window)
            if buttons == ["Pair", "Ignore"]:
                time.sleep(PAIRING_WAIT)
            self.type_until(how, is_gone)
        return alert.texts[1]


class DialogStage(ReaderStage, PanelStage):
    """Both."""
