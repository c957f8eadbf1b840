#include "snapshots/take_snapshot.h"

#include "frame/host.h"
#include "frame/qt_bridge.h"
#include "frame/siblings.h"
#include "frame/window_slots.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QString>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace cobaltrig::snapshots {

namespace py = pybind11;

namespace {

// Runs a clean-up when it goes out of scope unless dismissed; a failure of the clean-up itself goes
// to the console and never replaces the failure that may be on its way out.
template <class F> class OnExit {
public:
    OnExit(const char* what, F f) : what_(what), f_(std::move(f)) {}
    ~OnExit() {
        if (!armed_)
            return;
        py::error_scope keep_error;
        try {
            f_();
        } catch (py::error_already_set& e) {
            e.discard_as_unraisable(what_);
        } catch (...) {
        }
    }
    OnExit(const OnExit&) = delete;
    OnExit& operator=(const OnExit&) = delete;
    void dismiss() { armed_ = false; }

private:
    const char* what_;
    F f_;
    bool armed_ = true;
};

std::string failureText() {
    try {
        throw;
    } catch (py::error_already_set& e) {
        return py::str(e.value()).cast<std::string>();
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        return "unknown error";
    }
}

// The window in the browser's slot as a message parent; none when the slot is unset or the window
// can no longer be reached.
QWidget* browserParent() {
    try {
        py::object browser = slots::get("snapshotbrowser");
        if (browser.is_none())
            return nullptr;
        return bridge::unwrapWidget(browser.attr("widget"));
    } catch (...) {
        return nullptr;
    }
}

int position(const host::Node& node, const char* knob, int offset) {
    // Knob values may be fractional; the position is cut to a whole number after the offset.
    return static_cast<int>(node[knob].value().cast<double>() + offset);
}

std::string joined(const std::string& dir, const QString& file) {
    if (dir.empty())
        return file.toStdString();
    QString path = QString::fromStdString(dir);
    if (!path.endsWith(QDir::separator()))
        path += QDir::separator();
    return (path + file).toStdString();
}

void selectAll(const std::vector<host::Node>& nodes) {
    for (host::Node node : nodes)
        node.setSelected(true);
}

// The node the active viewer shows, after the checks that a render needs; none after a message
// that says what is missing.
std::optional<host::Node> viewed_node(QWidget* parent) {
    const std::optional<host::ViewerWindow> viewer = host::activeViewer();
    if (!viewer) {
        siblings::show_message_box(parent, "No active viewer found. Please create a viewer node.");
        return std::nullopt;
    }
    const std::optional<int> active_input = viewer->activeInput();
    if (!active_input) {
        siblings::show_message_box(parent, "Please set a viewer input.");
        return std::nullopt;
    }
    const std::optional<host::ViewerWindow> viewer_now = host::activeViewer();
    const std::optional<host::Node> viewer_node = viewer_now ? viewer_now->node() : std::nullopt;
    if (!viewer_node) {
        siblings::show_message_box(
            parent,
            "There is no active viewer node at the moment. Please select or create a viewer.");
        return std::nullopt;
    }
    std::optional<host::Node> last_node_viewing = viewer_node->input(*active_input);
    if (!last_node_viewing) {
        siblings::show_message_box(parent, "Cannot find comp node to create snapshot from.");
        return std::nullopt;
    }
    return last_node_viewing;
}

// Renders `source` at this frame, scaled to the configured width, into `image` through temporary
// nodes that never outlive the call. Gives the text of a failed render; a render width that is no
// number throws before anything is made.
std::optional<std::string> render_node(const host::Node& source, const std::string& image) {
    const int x = position(source, "xpos", 0);
    // The panel's field lets an empty or short text be saved; the artist learns which value is
    // wrong before anything is made.
    const std::string width_text = siblings::load_settings().text("snapshot_render_width");
    bool width_ok = false;
    const int render_width = QString::fromStdString(width_text).trimmed().toInt(&width_ok);
    if (!width_ok || render_width <= 0)
        throw std::invalid_argument(
            "the snapshot render width '" + width_text +
            "' in the settings is not a whole number of pixels; set one in the snapshot "
            "browser's settings");

    // The temporary nodes never outlive the call: whatever fails on the way, they go again.
    host::Node reformat_tmp = host::makeNode("Reformat");
    OnExit drop_reformat("removing the snapshot's temporary Reformat",
                         [&] { host::deleteNode(reformat_tmp); });
    reformat_tmp.setXYpos(x, position(source, "ypos", 50));
    reformat_tmp.setInput(0, source);
    reformat_tmp["type"].setValue(std::string("to box"));
    reformat_tmp["box_width"].setValue(py::int_(render_width));

    host::Node write_tmp = host::makeNode("Write");
    OnExit drop_write("removing the snapshot's temporary Write",
                      [&] { host::deleteNode(write_tmp); });
    write_tmp.setXYpos(x, position(source, "ypos", 90));
    write_tmp.setInput(0, reformat_tmp);
    write_tmp["file"].setValue(
        QDir::fromNativeSeparators(QString::fromStdString(image)).toStdString());

    reformat_tmp.selectOnly();
    write_tmp.setSelected(true);

    host::Node group_tmp = host::makeGroup(false);
    bool group_gone = false;
    OnExit drop_group("removing the snapshot's temporary group", [&] {
        if (!group_gone)
            host::deleteNode(group_tmp);
    });
    group_tmp.setXYpos(x, position(source, "ypos", 80));
    group_tmp["tile_color"].setValue(py::int_(144375295));
    group_tmp.setInput(0, source);
    group_tmp.setName("snapshot_" + std::to_string(QDateTime::currentSecsSinceEpoch()));

    drop_reformat.dismiss();
    host::deleteNode(reformat_tmp);
    drop_write.dismiss();
    host::deleteNode(write_tmp);

    host::Knob proxy_knob = host::root()["proxy"];
    const bool is_proxy_mode = py::bool_(proxy_knob.value());
    if (is_proxy_mode)
        proxy_knob.setValue(py::bool_(false));
    OnExit restore_proxy("restoring the proxy mode", [&] {
        if (is_proxy_mode)
            proxy_knob.setValue(py::bool_(true));
    });

    // What follows a failed render: the group holds a single Write, so nothing is left to render
    // once one fails. The loop stops there, the group's context is left while the group still
    // exists, the group is deleted once, and the caller shows the message once.
    std::optional<std::string> render_failure;
    {
        host::GroupContext inside(group_tmp);
        for (const host::Node& node : host::allNodes()) {
            try {
                if (node.Class() != "Write")
                    continue;
                const int first = host::frame();
                const int last = host::frame();
                host::execute(node, first, last);
            } catch (...) {
                render_failure = failureText();
                break;
            }
        }
    }
    group_gone = true;
    host::deleteNode(group_tmp);
    restore_proxy.dismiss();
    if (is_proxy_mode)
        proxy_knob.setValue(py::bool_(true));
    return render_failure;
}

void show_render_failure(QWidget* parent, const std::string& failure) {
    const std::string text = failure.find("has no valid channels") != std::string::npos
                                 ? std::string("No valid data to write")
                                 : failure;
    siblings::show_message_box(parent, text);
}

} // namespace

void snapshot() {
    siblings::Settings settings = siblings::load_settings();
    const std::vector<host::Node> selection_old = host::selectedNodes();
    QWidget* parent = browserParent();

    const std::string selection_mode = settings.text("snapshot_selection");
    if (selection_mode == "node selection" && host::selectedNodes().empty()) {
        siblings::show_message_box(parent, "Please select some nodes to export.");
        return;
    }
    // Only an unset directory is refused: an empty text means the host's working directory.
    const std::optional<std::string> current_snapshot_dir = settings.get("current_snapshot_dir");
    if (!current_snapshot_dir) {
        siblings::show_message_box(parent,
                                   "Please set a snapshot directory before creating a snapshot.");
        return;
    }
    const std::optional<host::Node> last_node_viewing = viewed_node(parent);
    if (!last_node_viewing)
        return;

    const QString shot_name =
        QFileInfo(QString::fromStdString(host::root().name())).completeBaseName();
    const QString snapshot_name =
        QStringLiteral("%1_%2").arg(QDateTime::currentSecsSinceEpoch()).arg(shot_name);
    const std::string snapshot_full_img = joined(*current_snapshot_dir, snapshot_name + ".jpg");
    const std::string snapshot_full_nk = joined(*current_snapshot_dir, snapshot_name + ".nk");

    const host::Node& source = *last_node_viewing;
    // Without an image there is no snapshot, so the rest of the sequence (remembering the
    // preview, saving a `.nk` that would stand alone, refreshing the browser) does not run; the
    // proxy mode and the artist's selection come back as on every other path.
    if (const std::optional<std::string> failure = render_node(source, snapshot_full_img)) {
        selectAll(selection_old);
        show_render_failure(parent, *failure);
        return;
    }

    siblings::update_xml("current_snapshot_preview", snapshot_full_img);

    const std::string save_mode = siblings::load_settings().text("snapshot_selection");
    if (save_mode == "all nodes") {
        host::scriptSave(snapshot_full_nk);
    } else if (save_mode == "upstream nodes") {
        // The viewed node is what the image shows: the saved graph holds it, and everything it
        // is made from; a source node alone makes a graph of one.
        host::Node viewed = source;
        viewed.setSelected(true);
        for (py::handle node : siblings::get_connected_nodes(source.object()))
            host::Node(py::reinterpret_borrow<py::object>(node)).setSelected(true);
        host::nodeCopy(snapshot_full_nk);
    } else if (save_mode == "node selection") {
        host::clear_selection_recursive();
        selectAll(selection_old);
        host::nodeCopy(snapshot_full_nk);
    }

    try {
        py::object browser = slots::get("snapshotbrowser");
        if (!py::hasattr(slots::module(), "snapshotbrowser"))
            return;
        if (!browser.is_none()) {
            browser.attr("populate_table_thumbs")();
            browser.attr("preview_image").attr("set_image")(snapshot_full_img);
        }
    } catch (...) {
        // A browser that cannot be refreshed (closed and deleted, or still half built) is no
        // reason to fail a snapshot that is already on disk; the selection is left as it is.
        return;
    }
    selectAll(selection_old);
}

bool render_current(const std::string& image) {
    QWidget* parent = browserParent();
    const std::optional<host::Node> source = viewed_node(parent);
    if (!source)
        return false;
    // Everything the render makes goes again; what it leaves in the undo list is one step at
    // most, and the selection is put back exactly, since it is part of the script too.
    std::vector<host::Node> selection_old;
    for (const host::Node& node : host::allNodes())
        if (node.isSelected())
            selection_old.push_back(node);
    std::optional<std::string> failure;
    {
        host::UndoGroup undo("compare with current");
        OnExit reselect("restoring the selection", [&] {
            for (host::Node node : host::allNodes())
                node.setSelected(false);
            selectAll(selection_old);
        });
        failure = render_node(*source, image);
    }
    if (failure) {
        show_render_failure(parent, *failure);
        return false;
    }
    return true;
}

} // namespace cobaltrig::snapshots
