"""What importing the module does, and does not do, to a running host."""

import textwrap

import pytest

SLOTS = ("snapshotbrowser", "i", "exportwindow", "settingswindow", "slider", "rezslider",
         "commentwindow", "lookdiff")


def test_import_leaves_the_host_alone_the_process_holds_one_qt_and_exits_cleanly(settings_home,
                                                                                  run_python):
    # The module is linked against the system's Qt; in a host the binding's Qt is loaded first and
    # must be the only one, or widgets made on one side are foreign objects on the other. At exit,
    # a window that Qt deleted before its holder must not take the host down.
    result = run_python(textwrap.dedent(r"""
        import os, re, nuke, hostctl
        from cobaltRig.qt import BINDING, QtCore, QtWidgets
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
        with open('/proc/self/maps') as maps:
            cores = {line.split()[-1] for line in maps if re.search(r'libQt[56]Core\.so', line)}
        print(len(cores), BINDING, os.path.dirname(QtCore.__file__), *sorted(cores))
        m.kept_window = m._testing.BridgeProbe()
        m.kept_window.widget.deleteLater()
        QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)
    """ % (SLOTS,)))
    assert result.returncode == 0, result.stderr
    count, binding, binding_dir, *cores = result.stdout.split()
    assert count == "1", result.stdout
    if binding == "PySide6":
        # The wheel's own Qt, not the system's older one the module was compiled against.
        assert cores[0].startswith(binding_dir), result.stdout


@pytest.mark.parametrize("major", [10, 13, 15, 16])
def test_import_refuses_a_host_that_carries_another_qt(run_python, major):
    result = run_python(textwrap.dedent("""
        import nuke
        from cobaltRig.qt import QT_MAJOR
        nuke.NUKE_VERSION_MAJOR = %d
        try:
            import cobaltRig.cobaltRig_w
            print('loaded in', QT_MAJOR)
        except ImportError as e:
            print('refused in', QT_MAJOR, e)
    """ % major))
    assert result.returncode == 0, result.stderr
    qt = int(result.stdout.split()[2])
    serves = major >= 16 if qt == 6 else 14 <= major <= 15
    if serves:
        assert result.stdout.startswith("loaded"), result.stdout
    else:
        assert result.stdout.startswith("refused") and "version %d." % major in result.stdout


@pytest.mark.parametrize("call", [
    lambda m, node: m.delete_selected_nodes_looks(1, "signal value"),
    lambda m, node: m.create_looks_widgets(node, False),
    lambda m, node: m.get_preset_knobs(node, 0),
    lambda m, node: m.remove_preset_knobs(node, None),
])
def test_entry_points_ignore_extra_positional_arguments(rig, nuke, call):
    call(rig, nuke.createNode("Blur", inpanel=False))
