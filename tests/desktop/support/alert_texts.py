"""What the program's alerts say, as a screen reader is told."""

import re

# Makes the toolkit list each text that appears, in the program's own output.
ENVIRONMENT = {
    "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
    "QT_LOGGING_RULES": "qt.accessibility.cache=true",
}
TEXT = re.compile(r'insert .*? name="((?:[^"\\]|\\.)*)" role=StaticText '
                  r'obj=QLabel\(0x[0-9a-f]+, name = "qt_msgbox_informativelabel"\)')


def alert_texts(log):
    """The informative texts of all alerts so far, oldest first."""
    return [text.replace("\\n", "\n").replace('\\"', '"') for text in TEXT.findall(log)]
