// src/snapshots: taking a snapshot of what the viewer shows (image, saved graph, comment, flag),
// the snapshot files on disk, the preview panes, the comment window and the browser with its
// settings panel. It uses the frame only (host and sibling facades, bridge, window slots, guarded
// reactions, the settings-file rewrite), no other subsystem.
//
// The snapshots' Python names: the browser and its preview panes, `snapshot` and
// `show_snapshot_browser`, and the address of the user guide.

#include "frame/bindings.h"
#include "frame/qt_bridge.h"
#include "frame/siblings.h"
#include "frame/window_slots.h"
#include "snapshots/comment_window.h"
#include "snapshots/snapshot_browser.h"
#include "snapshots/snapshot_preview.h"
#include "snapshots/snapshot_thumbnail.h"
#include "snapshots/take_snapshot.h"

#include <pybind11/stl.h>

#include <QAction>
#include <QBuffer>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QSplitter>
#include <QTableWidget>
#include <QTextEdit>
#include <QTimer>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

#include <stdexcept>

namespace cobaltrig {

/// Holds a pane that its browser owns through Qt parentage: it watches the pane like a window
/// holder, so a call on a pane whose browser is gone raises instead of touching freed memory, and
/// it never deletes the pane itself.
template <class Pane> class PaneHolder : public slots::WindowHolderBase {
public:
    explicit PaneHolder(Pane* pane) : WindowHolderBase(pane) {}
    Pane* get() const { return static_cast<Pane*>(window_.data()); }
};

} // namespace cobaltrig

PYBIND11_DECLARE_HOLDER_TYPE(Pane, cobaltrig::PaneHolder<Pane>)

namespace cobaltrig {

namespace py = pybind11;

namespace {

using PreviewImageClass = py::class_<SnapshotPreviewImage, PaneHolder<SnapshotPreviewImage>>;
using PreviewEmptyClass = py::class_<SnapshotPreviewEmpty, PaneHolder<SnapshotPreviewEmpty>>;
using BrowserClass = py::class_<SnapshotBrowser, slots::WindowHolder<SnapshotBrowser>>;
using ThumbnailClass = py::class_<SnapshotThumbnail, PaneHolder<SnapshotThumbnail>>;
using CommentWindowClass = py::class_<CommentWindow, slots::WindowHolder<CommentWindow>>;

// The Python object of a pane. A script may hold the object of a pane that Qt has deleted since
// (a thumbnail whose snapshot left the list); a pane made later at the same address would be handed
// that old object, which says its window was closed. Such a leftover is let go of first, so that
// the new pane gets an object of its own and the old one keeps saying what it always said.
template <class Pane> py::object paneObject(Pane* pane) {
    namespace detail = py::detail;
    if (const detail::type_info* type = detail::get_type_info(typeid(Pane))) {
        const auto found =
            py::reinterpret_steal<py::object>(detail::find_registered_python_instance(pane, type));
        if (found) {
            auto* instance = reinterpret_cast<detail::instance*>(found.ptr());
            detail::value_and_holder held = instance->get_value_and_holder(type, false);
            if (held && held.holder_constructed() && held.instance_registered() &&
                !held.template holder<PaneHolder<Pane>>().object()) {
                detail::deregister_instance(instance, held.value_ptr(), type);
                held.set_instance_registered(false);
            }
        }
    }
    // Handed over "owned" so that the pane's holder is made: it is the watch, and owns nothing.
    return py::cast(pane, py::return_value_policy::take_ownership);
}

py::object borrowed(QObject* object) {
    if (!object)
        return py::none();
    if (auto* image = qobject_cast<SnapshotPreviewImage*>(object))
        return paneObject(image);
    if (auto* empty = qobject_cast<SnapshotPreviewEmpty*>(object))
        return paneObject(empty);
    if (auto* thumb = qobject_cast<SnapshotThumbnail*>(object))
        return paneObject(thumb);
    return py::cast(static_cast<SnapshotBrowser*>(object), py::return_value_policy::reference);
}

std::optional<QString> optionalPath(const py::object& src) {
    if (src.is_none())
        return std::nullopt;
    return QString::fromStdString(py::str(src).cast<std::string>());
}

py::object optionalText(const std::optional<QString>& text) {
    return text ? py::object(py::str(text->toStdString())) : py::object(py::none());
}

// What the panes offer of a window; a call on a pane whose browser is gone says so.
template <class Pane, class Class> void def_pane_basics(Class& cls) {
    slots::register_window_class(typeid(Pane), "snapshot browser");
    cls.def("show", [](Pane& self) { self.show(); })
        .def("close", [](Pane& self) { return self.close(); })
        .def("isVisible", [](Pane& self) { return self.isVisible(); })
        .def_property_readonly("widget", [](Pane& self) { return bridge::wrap(&self); });
}

void bind_preview_image(PreviewImageClass& cls) {
    def_pane_basics<SnapshotPreviewImage>(cls);
    cls.def(
           "set_image",
           [](SnapshotPreviewImage& p, py::object src, bool update_xml, py::args) {
               p.set_image(optionalPath(src), update_xml);
           },
           py::arg("src") = py::none(), py::arg("update_xml") = true)
        .def("clear_image", [](SnapshotPreviewImage& p, py::args) { p.clear_image(); })
        .def("zoom_in", [](SnapshotPreviewImage& p, py::args) { p.zoom_in(); })
        .def("zoom_out", [](SnapshotPreviewImage& p, py::args) { p.zoom_out(); })
        .def(
            "scaleImage",
            [](SnapshotPreviewImage& p, double factor, py::args) { p.scaleImage(factor); },
            py::arg("factor"))
        .def(
            "adjust_scrollbar",
            [](SnapshotPreviewImage&, py::object scrollbar, double factor, py::args) {
                auto* bar = qobject_cast<QScrollBar*>(bridge::unwrap(scrollbar));
                if (!bar)
                    throw py::type_error("adjust_scrollbar takes a QScrollBar");
                SnapshotPreviewImage::adjust_scrollbar(bar, factor);
            },
            py::arg("scrollbar"), py::arg("factor"))
        .def("normal_size", [](SnapshotPreviewImage& p, py::args) { p.normal_size(); })
        .def("show_right_click_menu",
             [](SnapshotPreviewImage& p, py::args) { p.show_right_click_menu(); })
        .def("insert_preview", [](SnapshotPreviewImage& p, py::args) { p.insert_preview(); })
        .def("ask_insert_snapshot",
             [](SnapshotPreviewImage& p, py::args) { p.ask_insert_snapshot(); })
        .def_property_readonly("snapshotbrowser",
                               [](SnapshotPreviewImage& p) { return borrowed(p.snapshotbrowser); })
        .def_property_readonly("image",
                               [](SnapshotPreviewImage& p) { return p.image.toStdString(); })
        .def_property_readonly("icons", [](SnapshotPreviewImage& p) { return p.icons; })
        .def_property_readonly("alt_hold", [](SnapshotPreviewImage& p) { return p.alt_hold; })
        .def_property_readonly("scaleFactor",
                               [](SnapshotPreviewImage& p) { return p.scaleFactor; });
    bridge::def_widget(cls, "image_label", &SnapshotPreviewImage::image_label);
    bridge::def_widget(cls, "scroll_area", &SnapshotPreviewImage::scroll_area);
    bridge::def_widget(cls, "layout_main", &SnapshotPreviewImage::layout_main);
    bridge::def_widget(cls, "menu_main", &SnapshotPreviewImage::menu_main);
    bridge::def_widget(cls, "menu_view", &SnapshotPreviewImage::menu_view);
    bridge::def_widget(cls, "menu_flags", &SnapshotPreviewImage::menu_flags);
    bridge::def_widget(cls, "action_zoom_in", &SnapshotPreviewImage::action_zoom_in);
    bridge::def_widget(cls, "action_zoom_out", &SnapshotPreviewImage::action_zoom_out);
    bridge::def_widget(cls, "action_fit", &SnapshotPreviewImage::action_fit);
    bridge::def_widget(cls, "action_insert_snapshot",
                       &SnapshotPreviewImage::action_insert_snapshot);
    bridge::def_widget(cls, "action_insert_preview", &SnapshotPreviewImage::action_insert_preview);
    bridge::def_widget(cls, "action_unflag", &SnapshotPreviewImage::action_unflag);
    bridge::def_widget(cls, "action_comment", &SnapshotPreviewImage::action_comment);
    bridge::def_widget(cls, "sep", &SnapshotPreviewImage::sep);
    bridge::def_widget(cls, "action_clear", &SnapshotPreviewImage::action_clear);
    // Compare.
    cls.def("compare_with",
            [](SnapshotPreviewImage& p, const std::string& src) {
                p.compare_with(QString::fromStdString(src));
            })
        .def("compare_with_current", [](SnapshotPreviewImage& p) { p.compare_with_current(); })
        .def("end_compare", [](SnapshotPreviewImage& p) { p.end_compare(); })
        .def_property_readonly("comparing", &SnapshotPreviewImage::comparing)
        .def_property_readonly("wipe_split", &SnapshotPreviewImage::wipe_split);
    bridge::def_widget(cls, "action_compare_current",
                       &SnapshotPreviewImage::action_compare_current);
    bridge::def_widget(cls, "action_end_compare", &SnapshotPreviewImage::action_end_compare);
    bridge::def_widget(cls, "label_compare_a", &SnapshotPreviewImage::label_compare_a);
    bridge::def_widget(cls, "label_compare_b", &SnapshotPreviewImage::label_compare_b);
}

void bind_preview_empty(PreviewEmptyClass& cls) {
    def_pane_basics<SnapshotPreviewEmpty>(cls);
    cls.def_property_readonly("snapshotbrowser",
                              [](SnapshotPreviewEmpty& p) { return borrowed(p.snapshotbrowser); });
}

void bind_browser(BrowserClass& cls) {
    cls.def(py::init<>());
    bridge::def_window_basics<SnapshotBrowser>(cls, "snapshot browser");
    cls.def_property_readonly("settings", [](SnapshotBrowser& b) { return b.settings.mapping; })
        .def_property_readonly("icons", [](SnapshotBrowser& b) { return b.icons; })
        .def_property(
            "fade_method", [](SnapshotBrowser& b) { return b.fade_method.toStdString(); },
            [](SnapshotBrowser& b, const std::string& method) {
                b.fade_method = QString::fromStdString(method);
            })
        .def_property_readonly("fade_time", [](SnapshotBrowser& b) { return b.fade_time; })
        .def_property_readonly("show_settings", [](SnapshotBrowser& b) { return b.show_settings; })
        .def_property_readonly("hover_thumbnails",
                               [](SnapshotBrowser& b) { return b.hover_thumbnails; })
        .def_property_readonly("hover_preview", [](SnapshotBrowser& b) { return b.hover_preview; })
        .def_property_readonly("current_thumb_src",
                               [](SnapshotBrowser& b) { return b.current_thumb_src.toStdString(); })
        .def_property_readonly(
            "snapshotbrowser_root",
            [](SnapshotBrowser& b) { return b.snapshotbrowser_root.toStdString(); })
        .def_property_readonly(
            "current_snapshot_dir",
            [](SnapshotBrowser& b) { return optionalText(b.current_snapshot_dir); })
        .def_property_readonly(
            "cur_snapshot_preview",
            [](SnapshotBrowser& b) { return optionalText(b.cur_snapshot_preview); })
        .def_property_readonly("window_resized",
                               [](SnapshotBrowser& b) { return b.window_resized; })
        .def_property_readonly("timer_fade",
                               [](SnapshotBrowser& b) { return bridge::wrap(b.timer_fade); })
        .def_property_readonly("preview_image",
                               [](SnapshotBrowser& b) { return borrowed(b.preview_image); })
        .def_property_readonly("preview_empty",
                               [](SnapshotBrowser& b) { return borrowed(b.preview_empty); })
        .def("populate_table_thumbs",
             [](SnapshotBrowser& b, py::args) { b.populate_table_thumbs(); })
        .def("row_sources",
             [](SnapshotBrowser& b) {
                 std::vector<std::string> sources;
                 for (const QString& source : b.row_sources())
                     sources.push_back(source.toStdString());
                 return sources;
             })
        // Thumbnail table and version slider.
        .def("get_thumbnails_list",
             [](SnapshotBrowser& b, py::args) {
                 py::list thumbs;
                 for (SnapshotThumbnail* thumb : b.get_thumbnails_list())
                     thumbs.append(borrowed(thumb));
                 return thumbs;
             })
        .def("load_thumbs_visible_top_bottom",
             [](SnapshotBrowser& b, py::args) { b.load_thumbs_visible_top_bottom(); })
        .def("adjust_splitter_sizes",
             [](SnapshotBrowser& b, py::args) { b.adjust_splitter_sizes(); })
        .def("setup_version_slider", [](SnapshotBrowser& b, py::args) { b.setup_version_slider(); })
        .def("slide_versions", [](SnapshotBrowser& b, py::args) { b.slide_versions(); })
        .def(
            "resize_look_browser",
            [](SnapshotBrowser& b, const std::string& mode, py::args) {
                b.resize_look_browser(QString::fromStdString(mode));
            },
            py::arg("mode"))
        // Snapshot directories.
        .def("populate_combo_pool", [](SnapshotBrowser& b, py::args) { b.populate_combo_pool(); })
        .def("switch_snapshot_dir", [](SnapshotBrowser& b, py::args) { b.switch_snapshot_dir(); })
        .def("ask_delete_snapshot_dir",
             [](SnapshotBrowser& b, py::args) { b.ask_delete_snapshot_dir(); })
        .def("create_new_snapshot_directory",
             [](SnapshotBrowser& b, py::args) { b.create_new_snapshot_directory(); })
        // End of snapshot directories.
        // Settings panel.
        .def("toggle_preview_settings",
             [](SnapshotBrowser& b, py::args) { b.toggle_preview_settings(); })
        .def("save_settings", [](SnapshotBrowser& b, py::args) { b.save_settings(); })
        .def("browser_snapshotbrowser_root",
             [](SnapshotBrowser& b, py::args) { b.browser_snapshotbrowser_root(); })
        // End of settings panel.
        // Input and fades.
        .def("set_hover_thumbnails", [](SnapshotBrowser& b, bool has_hover,
                                        py::args) { b.set_hover_thumbnails(has_hover); })
        .def("has_hover_thumbnail",
             [](SnapshotBrowser& b, py::args) { return b.has_hover_thumbnail(); })
        .def("fade", [](SnapshotBrowser& b, py::args) { b.fade(); })
        .def("fade_", [](SnapshotBrowser& b, py::args) { b.fade_(); })
        .def_property_readonly("fade_connections",
                               [](SnapshotBrowser& b) { return b.fade_connections(); })
        .def_property_readonly(
            "xy",
            [](SnapshotBrowser& b) {
                return bridge::pyside_class("QPoint")(b.xy.x(), b.xy.y());
            })
        // End of input and fades.
        // Find.
        .def_property_readonly("find_state",
                               [](SnapshotBrowser& b) { return b.find_state().toStdString(); })
        .def_property_readonly("find_chips",
                               [](SnapshotBrowser& b) {
                                   py::list chips;
                                   for (QToolButton* chip : b.find_chips)
                                       chips.append(bridge::wrap(chip));
                                   return chips;
                               })
        .def("show_help_menu", [](SnapshotBrowser& b, py::args) { b.show_help_menu(); })
        .def("browse_online_docs", [](SnapshotBrowser& b, py::args) { b.browse_online_docs(); })
        .def("show_changelog", [](SnapshotBrowser& b, py::args) { b.show_changelog(); })
        .def("browse_support", [](SnapshotBrowser& b, py::args) { b.browse_support(); })
        .def("show_about", [](SnapshotBrowser& b, py::args) { b.show_about(); });

#define COBALTRIG_WIDGET(name) bridge::def_widget(cls, #name, &SnapshotBrowser::name)
    COBALTRIG_WIDGET(splitter);
    COBALTRIG_WIDGET(combo_snapshot_dir);
    COBALTRIG_WIDGET(table_thumbs);
    COBALTRIG_WIDGET(slider_versions);
    COBALTRIG_WIDGET(input_find);
    COBALTRIG_WIDGET(label_find_state);
    COBALTRIG_WIDGET(push_snapshot);
    COBALTRIG_WIDGET(push_settings);
    COBALTRIG_WIDGET(push_help);
    COBALTRIG_WIDGET(push_custom_size);
    COBALTRIG_WIDGET(push_maximize);
    COBALTRIG_WIDGET(push_close);
    COBALTRIG_WIDGET(label_snapshot_selection);
    COBALTRIG_WIDGET(combo_snapshot_selection);
    COBALTRIG_WIDGET(label_snapshot_render_width);
    COBALTRIG_WIDGET(input_snapshot_render_width);
    COBALTRIG_WIDGET(label_custom_width);
    COBALTRIG_WIDGET(input_custom_width);
    COBALTRIG_WIDGET(label_custom_height);
    COBALTRIG_WIDGET(input_custom_height);
    COBALTRIG_WIDGET(label_snapshotbrowser_root);
    COBALTRIG_WIDGET(input_snapshotbrowser_root);
    COBALTRIG_WIDGET(push_browser_snapshot_root);
    COBALTRIG_WIDGET(push_reveal_snapshot_root);
    COBALTRIG_WIDGET(check_thumbnail_scrollbar);
    COBALTRIG_WIDGET(label_thumbnail_scrollbar);
    COBALTRIG_WIDGET(push_save_settings);
    COBALTRIG_WIDGET(layout_main);
    COBALTRIG_WIDGET(layout_top);
    COBALTRIG_WIDGET(group_thumbs);
    COBALTRIG_WIDGET(layout_preview_list);
    COBALTRIG_WIDGET(group_preview_image);
    COBALTRIG_WIDGET(layout_preview_image);
    COBALTRIG_WIDGET(group_settings);
    COBALTRIG_WIDGET(layout_settings_main);
    COBALTRIG_WIDGET(menu_help);
    COBALTRIG_WIDGET(action_browse_online_docs);
    COBALTRIG_WIDGET(action_show_changelog);
    COBALTRIG_WIDGET(action_support);
    COBALTRIG_WIDGET(action_about);
#undef COBALTRIG_WIDGET
}

// A copy of a pixmap as a PySide QPixmap (a null pixmap stays null), for scripts that inspect a
// thumbnail; the table itself never goes this way.
py::object pixmapObject(const QPixmap& pixmap) {
    py::object result = bridge::pyside_class("QPixmap")();
    if (pixmap.isNull())
        return result;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    pixmap.save(&buffer, "PNG");
    result.attr("loadFromData")(py::bytes(bytes.constData(), bytes.size()));
    return result;
}

void bind_thumbnail(ThumbnailClass& cls) {
    def_pane_basics<SnapshotThumbnail>(cls);
    cls.def("get_src", [](SnapshotThumbnail& t, py::args) { return t.get_src().toStdString(); })
        .def("set_meta_ui_elements",
             [](SnapshotThumbnail& t, py::args) { t.set_meta_ui_elements(); })
        .def("show_right_click_menu",
             [](SnapshotThumbnail& t, py::args) { t.show_right_click_menu(); })
        .def("set_to_preview", [](SnapshotThumbnail& t, py::args) { t.set_to_preview(); })
        .def("load_thumbnail", [](SnapshotThumbnail& t, py::args) { t.load_thumbnail(); })
        .def("delete_snapshot", [](SnapshotThumbnail& t, py::args) { t.delete_snapshot(); })
        .def("delete_snapshots_all",
             [](SnapshotThumbnail& t, py::args) { t.delete_snapshots_all(); })
        .def(
            "move_snapshot",
            [](SnapshotThumbnail& t, const std::string& dest, py::args) {
                t.move_snapshot(QString::fromStdString(dest));
            },
            py::arg("dest"))
        .def_property_readonly("src", [](SnapshotThumbnail& t) { return t.src.toStdString(); })
        .def_property_readonly("w", [](SnapshotThumbnail& t) { return t.w; })
        .def_property_readonly("h", [](SnapshotThumbnail& t) { return t.h; })
        .def_property_readonly("pixmap",
                               [](SnapshotThumbnail& t) { return pixmapObject(t.pixmap); })
        .def_property_readonly("cannot_read",
                               [](SnapshotThumbnail& t) { return t.cannot_read.toStdString(); })
        .def_property_readonly("icons", [](SnapshotThumbnail& t) { return t.icons; })
        .def_property_readonly("snapshotbrowser",
                               [](SnapshotThumbnail& t) { return borrowed(t.snapshotbrowser); })
        // A script sees the marks (and, through `widget`, the tool tip) of any row, in view or not.
        .def_property_readonly("label_comment",
                               [](SnapshotThumbnail& t) {
                                   t.ensure_meta_ui_elements();
                                   return bridge::wrap(t.comment_mark());
                               })
        .def_property_readonly("label_flag",
                               [](SnapshotThumbnail& t) {
                                   t.ensure_meta_ui_elements();
                                   return bridge::wrap(t.flag_mark());
                               })
        .def_property_readonly("widget", [](SnapshotThumbnail& t) {
            t.ensure_meta_ui_elements();
            return bridge::wrap(&t);
        });
#define COBALTRIG_WIDGET(name) bridge::def_widget(cls, #name, &SnapshotThumbnail::name)
    COBALTRIG_WIDGET(menu_main);
    COBALTRIG_WIDGET(menu_flags);
    COBALTRIG_WIDGET(menu_move);
    COBALTRIG_WIDGET(action_preview);
    COBALTRIG_WIDGET(action_compare);
    COBALTRIG_WIDGET(action_unflag);
    COBALTRIG_WIDGET(action_comment);
    COBALTRIG_WIDGET(action_reveal);
    COBALTRIG_WIDGET(action_delete);
    COBALTRIG_WIDGET(action_delete_all);
    COBALTRIG_WIDGET(sep2);
#undef COBALTRIG_WIDGET
}

void bind_comment_window(CommentWindowClass& cls) {
    cls.def(py::init([](const std::string& src, SnapshotBrowser* browser) {
                return new CommentWindow(QString::fromStdString(src), browser);
            }),
            py::arg("src"), py::arg("snapshotbrowser"));
    bridge::def_window_basics<CommentWindow>(cls, "comment");
    cls.def("load_comments",
            [](CommentWindow& c, py::args) { return c.load_comments().toStdString(); })
        .def("set_comment", [](CommentWindow& c, py::args) { c.set_comment(); })
        .def_property_readonly("metaxml", [](CommentWindow& c) { return c.metaxml.toStdString(); })
        .def_property_readonly("snapshotbrowser", [](CommentWindow& c) {
            return c.snapshotbrowser ? borrowed(c.snapshotbrowser.data()) : py::object(py::none());
        });
    bridge::def_widget(cls, "text_comment", &CommentWindow::text_comment);
    bridge::def_widget(cls, "push_save", &CommentWindow::push_save);
    bridge::def_widget(cls, "push_cancel", &CommentWindow::push_cancel);
    bridge::def_widget(cls, "layout_push", &CommentWindow::layout_push);
    bridge::def_widget(cls, "layout_main", &CommentWindow::layout_main);
}

py::object show_comment_window(const std::string& src, const py::object& browser) {
    return slots::open_window("commentwindow",
                              [&] { return slots::module().attr("CommentWindow")(src, browser); });
}

py::object show_snapshot_browser() {
    return slots::open_window(
        "snapshotbrowser", [] { return slots::module().attr("SnapshotBrowser")(); },
        [](py::object& window) {
            siblings::center_window(bridge::unwrapWidget(window.attr("widget")));
            try {
                window.attr("preview_image").attr("normal_size")();
            } catch (...) {
                // A browser that stopped building after its message has no preview to fit.
            }
        });
}

} // namespace

void bind_snapshots(py::module_& m) {
    // Declared up front so that every signature names these types, whatever the order below.
    PreviewImageClass preview_image(m, "SnapshotPreviewImage",
                                    "The browser's pane that shows one snapshot large.");
    PreviewEmptyClass preview_empty(m, "SnapshotPreviewEmpty",
                                    "The logo that stands in for the preview while there is none.");
    BrowserClass browser(m, "SnapshotBrowser", "The frameless window that browses snapshots.");
    bind_preview_image(preview_image);
    bind_preview_empty(preview_empty);
    bind_browser(browser);

    // Snapshot files: the thumbnail of a row and the comment editor.
    ThumbnailClass thumbnail(m, "SnapshotThumbnail",
                             "One row of the snapshot browser's list, with its marks and menu.");
    CommentWindowClass comment_window(m, "CommentWindow", "The comment editor of one snapshot.");
    bind_thumbnail(thumbnail);
    bind_comment_window(comment_window);
    m.def(
        "show_comment_window",
        [](const std::string& src, const py::object& snapshotbrowser, py::args) {
            return show_comment_window(src, snapshotbrowser);
        },
        py::arg("src"), py::arg("snapshotbrowser"),
        "Opens the comment editor of the snapshot with image src, replacing one that is open.");

    m.attr("TOOL_TUTORIAL") = help::documentation_url().toString().toStdString();

    m.def(
        "snapshot", [](py::args) { snapshots::snapshot(); },
        "Renders what the active viewer shows into the current snapshot directory, with the node "
        "graph beside it.");
    m.def(
        "show_snapshot_browser", [](py::args) { return show_snapshot_browser(); },
        "Opens the snapshot browser, replacing one that is open.");
}

} // namespace cobaltrig
