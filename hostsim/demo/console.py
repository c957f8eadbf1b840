"""The host's console: what Python prints, failed commands with their traceback included.

The host shows a failed script command in its script editor; the demo host shows everything written
to `sys.stdout` and `sys.stderr` here, and still passes it on to the terminal.
"""

import sys

from cobaltRig.qt import QtGui, QtWidgets


class ConsolePane(QtWidgets.QPlainTextEdit):
    def __init__(self, parent=None):
        super().__init__(parent)
        self.setObjectName("console")
        self.setReadOnly(True)
        self.setMaximumBlockCount(2000)
        font = QtGui.QFontDatabase.systemFont(QtGui.QFontDatabase.FixedFont)
        font.setPointSizeF(8.5)
        self.setFont(font)
        self.setPlaceholderText("Script output and failed commands show here.")
        self.streams = None

    def append_text(self, text):
        cursor = self.textCursor()
        cursor.movePosition(QtGui.QTextCursor.End)
        cursor.insertText(text)
        self.setTextCursor(cursor)
        self.ensureCursorVisible()

    def capture(self):
        """Shows sys.stdout and sys.stderr here from now on, until `release`."""
        if self.streams is None:
            self.streams = sys.stdout, sys.stderr
            sys.stdout = _Tee(self.streams[0], self)
            sys.stderr = _Tee(self.streams[1], self)

    def release(self):
        if self.streams is not None:
            sys.stdout, sys.stderr = self.streams
            self.streams = None


class _Tee:
    """A stream that writes to the terminal's stream and to the console."""

    def __init__(self, stream, console):
        self.stream, self.console = stream, console

    def write(self, text):
        try:
            self.console.append_text(text)
        except RuntimeError:
            pass  # the console is gone; the terminal still gets the text
        return self.stream.write(text)

    def flush(self):
        self.stream.flush()

    def __getattr__(self, name):
        return getattr(self.stream, name)
