"""Fixtures of the sibling-module tests: answering modal dialogs the way a user would."""

import pytest
from cobaltRig.qt import QtCore, QtWidgets


@pytest.fixture
def answer_modal(qapp):
    """answer_modal(action), called before the code that opens the dialog, runs action(dialog) on
    the next modal dialog; a failing answer closes it, so the test fails instead of hanging."""
    errors = []

    def arm(action, tries=300):
        left = [tries]

        def poll():
            dialog = QtWidgets.QApplication.activeModalWidget()
            if dialog is None:
                left[0] -= 1
                if left[0] > 0:
                    QtCore.QTimer.singleShot(10, poll)
                else:
                    errors.append("no modal dialog opened")
                return
            try:
                action(dialog)
            except Exception as error:  # noqa: BLE001 - reported at teardown
                errors.append(error)
                dialog.close()

        QtCore.QTimer.singleShot(0, poll)

    yield arm
    assert not errors, errors

