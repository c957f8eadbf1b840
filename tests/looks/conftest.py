"""A small script to store and apply looks on: CheckerBoard -> Blur -> Grade."""

import pytest


@pytest.fixture
def chain(nuke):
    source = nuke.createNode("CheckerBoard", inpanel=False)
    blur = nuke.createNode("Blur", inpanel=False)
    grade = nuke.createNode("Grade", inpanel=False)
    return source, blur, grade
