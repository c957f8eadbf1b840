"""What importing the module does, and does not do, to a running host."""

import textwrap

import pytest

SLOTS = ("snapshotbrowser", "i", "exportwindow", "settingswindow", "slider", "rezslider",
         "commentwindow", "lookdiff")


def test_import_defines_names_and_leaves_the_host_alone(settings_home, run_python):
    result = run_python(textwrap.dedent("""
        import os, nuke, hostctl
        from cobaltRig.qt import QtWidgets
        blur = nuke.createNode('Blur')
        def state():
            return ([(n.name(), sorted(n.knobs())) for n in nuke.allNodes()],
                    [n.name() for n in nuke.selectedNodes()], list(hostctl.messages),
                    len(QtWidgets.QApplication.topLevelWidgets()))
        before = state()
        import cobaltRig.cobaltRig_w as m
        assert state() == before, (state(), before)
        assert os.listdir(os.environ['COBALTRIG_HOME']) == [], 'settings were read at import'
        slots = %r
        assert [s for s in slots if hasattr(m, s)] == [], 'a window slot is set at import'
        assert m.TOOL_TUTORIAL.startswith('file:') and m.TOOL_TUTORIAL.endswith('/docs/user_guide.html')
        print('clean import')
    """ % (SLOTS,)))
    assert result.returncode == 0, result.stderr
    assert "clean import" in result.stdout


def test_import_refuses_a_host_with_the_older_toolkit(run_python):
    result = run_python(textwrap.dedent("""
        import nuke
        nuke.NUKE_VERSION_MAJOR = 10
        try:
            import cobaltRig.cobaltRig_w
        except ImportError as e:
            print('refused:', e)
    """))
    assert result.returncode == 0, result.stderr
    assert "refused:" in result.stdout and "version 10" in result.stdout


@pytest.mark.parametrize("call", [
    lambda m, node: m.delete_selected_nodes_looks(1, "signal value"),
    lambda m, node: m.create_looks_widgets(node, False),
    lambda m, node: m.get_preset_knobs(node, 0),
    lambda m, node: m.remove_preset_knobs(node, None),
])
def test_entry_points_ignore_extra_positional_arguments(rig, nuke, call):
    call(rig, nuke.createNode("Blur", inpanel=False))
