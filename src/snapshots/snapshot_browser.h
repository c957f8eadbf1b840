#pragma once
// The snapshot browser: a frameless, always-on-top window with the snapshots of the current
// directory on the left, one snapshot large in the middle, and a settings panel that takes the
// place of both on demand. The module's slot `snapshotbrowser` holds the one current browser.
//
// One class shared by several concerns; its definitions are split over source files by concern
// (construction and help in snapshot_browser.cpp, the table, the directory box, the settings
// panel and size modes, the keys, dragging and fades).

#include "frame/siblings.h"
#include "snapshots/snapshot_files.h"

#include <QPoint>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <map>
#include <optional>
#include <string>
#include <vector>

class QAction;
class QEvent;
class QKeyEvent;
class QMouseEvent;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QResizeEvent;
class QMenu;
class QPushButton;
class QSlider;
class QSplitter;
class QTableWidget;
class QTimer;
class QToolButton;
class QVBoxLayout;
class QUrl;

namespace cobaltrig {

struct FindEntry;
class FindIndex;
class SnapshotPreviewImage;
class SnapshotPreviewEmpty;
class SnapshotThumbnail;

class SnapshotBrowser : public QWidget {
    Q_OBJECT
public:
    SnapshotBrowser();
    ~SnapshotBrowser() override;

    /// False when construction stopped after a message (the root or the current directory could
    /// not be made): the window then has no widgets.
    bool built() const { return preview_image != nullptr; }

    // Help menu.
    void show_help_menu();
    void browse_online_docs();
    void show_changelog();
    void browse_support();
    void show_about();

    // Thumbnail table and version slider.
    /// Rebuilds the table from the current snapshot directory, newest first; safe to call on a
    /// shown window, and the one way its rows are made.
    void populate_table_thumbs();
    /// The thumbnail of each row, top to bottom; null for a row without one.
    std::vector<SnapshotThumbnail*> get_thumbnails_list() const;
    /// The image paths of the rows that hold a thumbnail, top to bottom.
    QStringList row_sources() const;
    /// Reads the images of the rows in view and a few below them.
    void load_thumbs_visible_top_bottom();
    /// Fits the preview's height and the rows to the widths the splitter or the window gave.
    void adjust_splitter_sizes();
    /// Range of the slider from the directory current at construction, on the remembered preview.
    void setup_version_slider();
    /// Shows and remembers the snapshot of the slider's row.
    void slide_versions();

    // Find: a field and flag chips above the list show only the rows that match.
    /// Hides the rows whose comment and file name lack the field's text, or that lack the chip's
    /// flag; once both are clear, shows every row at the scroll position from before.
    void apply_find();
    /// Whether a text or a chip narrows the list now.
    bool finding() const;
    /// The rows shown, top to bottom, while finding: what the slider and the arrows step through.
    const std::vector<int>& shown_rows() const { return shown_rows_; }
    /// The next row shown from `row` in the direction of `step`; -1 or the row count past the ends.
    int row_beside(int row, int step) const;
    /// "waiting" for the first paint, "reading" the comments and flags, or "ready".
    QString find_state() const;
    /// What a row just read of its snapshot's metadata, for the find index.
    void note_metadata(const QString& src, const snapshot_files::Metadata& meta);
    QLineEdit* input_find = nullptr;
    QLabel* label_find_state = nullptr;
    QVBoxLayout* layout_find = nullptr;
    QHBoxLayout* layout_find_flags = nullptr;
    std::vector<QToolButton*> find_chips;

    // Snapshot directories.
    /// Rebuilds the directory box (title, the commands the advanced settings show, a divider, the
    /// directories of the root) and selects the current directory, which fills the table.
    void populate_combo_pool();
    /// Acts on the box's current entry: a command, or a directory that becomes current.
    void switch_snapshot_dir();
    /// Deletes the current directory with all its snapshots after asking.
    void ask_delete_snapshot_dir();
    /// Asks for a name and makes a directory of that name under the root.
    void create_new_snapshot_directory();

    // Settings panel and size modes.
    /// Swaps the settings panel with the list and the preview.
    void toggle_preview_settings();
    /// Writes every field of the panel to the settings file in one rewrite, then closes the panel.
    void save_settings();
    /// Lets the user choose a root directory for the panel's field; nothing is stored yet.
    void browser_snapshotbrowser_root();
    /// Stores the size for "custom" or "maximized" and reopens the browser at it; the empty mode
    /// fades the window out and closes it.
    void resize_look_browser(const QString& mode);

    // Input, dragging and fades.
    /// Drags the window by the settings panel, and gives the browser the keys of every widget of
    /// the main view before the widget sees them: a key the browser acts on goes no further.
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Acts on one of the browser's keys, pressed with the focus on `watched`; false when the key
    /// isn't the browser's and is left to that widget.
    bool browser_key(QKeyEvent& event, QObject* watched);
    /// Whether the browser would act on the key, so that no application shortcut takes it.
    bool claims_key(const QKeyEvent& event, QObject* watched) const;
    void set_hover_thumbnails(bool has_hover);
    bool has_hover_thumbnail() const { return hover_thumbnails; }
    /// Starts the fade timer and adds one more step per tick in the direction of `fade_method`.
    void fade();
    /// One step of the running fade; the end is found on the opacity the window reports back.
    void fade_();
    /// The number of steps each tick of `timer_fade` runs.
    int fade_connections() const { return fade_connections_; }
    /// Moves the window to `pointer` plus `offset`, in screen coordinates, and keeps it in `xy`.
    void drag_to(const QPoint& pointer, const QPoint& offset);

    siblings::Settings settings;
    std::map<std::string, std::string> icons;
    QTimer* timer_fade = nullptr;
    QString fade_method = QStringLiteral("in");
    int fade_time = 25;
    bool show_settings = false;
    bool hover_thumbnails = false;
    bool hover_preview = false;
    QString current_thumb_src;
    QString snapshotbrowser_root;
    std::optional<QString> current_snapshot_dir;
    std::optional<QString> cur_snapshot_preview;
    int window_resized = 0;
    QPoint xy;

    // Main view.
    QSplitter* splitter = nullptr;
    QComboBox* combo_snapshot_dir = nullptr;
    QTableWidget* table_thumbs = nullptr;
    QSlider* slider_versions = nullptr;
    SnapshotPreviewImage* preview_image = nullptr;
    SnapshotPreviewEmpty* preview_empty = nullptr;
    QToolButton* push_snapshot = nullptr;
    QToolButton* push_settings = nullptr;
    QToolButton* push_help = nullptr;
    QToolButton* push_custom_size = nullptr;
    QToolButton* push_maximize = nullptr;
    QToolButton* push_close = nullptr;

    // Settings panel.
    QLabel* label_snapshot_selection = nullptr;
    QComboBox* combo_snapshot_selection = nullptr;
    QLabel* label_snapshot_render_width = nullptr;
    QLineEdit* input_snapshot_render_width = nullptr;
    QLabel* label_custom_width = nullptr;
    QLineEdit* input_custom_width = nullptr;
    QLabel* label_custom_height = nullptr;
    QLineEdit* input_custom_height = nullptr;
    QLabel* label_snapshotbrowser_root = nullptr;
    QLineEdit* input_snapshotbrowser_root = nullptr;
    QToolButton* push_browser_snapshot_root = nullptr;
    QToolButton* push_reveal_snapshot_root = nullptr;
    QCheckBox* check_thumbnail_scrollbar = nullptr;
    QLabel* label_thumbnail_scrollbar = nullptr;
    QPushButton* push_save_settings = nullptr;

    // Layouts.
    QVBoxLayout* layout_main = nullptr;
    QHBoxLayout* layout_top = nullptr;
    QGroupBox* group_thumbs = nullptr;
    QVBoxLayout* layout_preview_list = nullptr;
    QGroupBox* group_preview_image = nullptr;
    QVBoxLayout* layout_preview_image = nullptr;
    QGroupBox* group_settings = nullptr;
    QVBoxLayout* layout_settings_main = nullptr;
    QHBoxLayout* layout_settings_snapshot_selection = nullptr;
    QHBoxLayout* layout_snapshot_render_width = nullptr;
    QHBoxLayout* layout_settings_default_size = nullptr;
    QHBoxLayout* layout_settings_snapshotbrowser_root = nullptr;
    QHBoxLayout* layout_settings_thumbnail_scrollbar = nullptr;

    // Help menu, made at each press.
    QMenu* menu_help = nullptr;
    QAction* action_browse_online_docs = nullptr;
    QAction* action_show_changelog = nullptr;
    QAction* action_support = nullptr;
    QAction* action_about = nullptr;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// Within one refresh (the box filled, a directory chosen) the table and the slider share one
    /// listing of the directory; outside one, each lists it afresh.
    struct ListingScope {
        SnapshotBrowser& browser;
        explicit ListingScope(SnapshotBrowser& browser) : browser(browser) {
            ++browser.listing_scopes_;
        }
        ~ListingScope() {
            if (--browser.listing_scopes_ == 0)
                browser.shared_listing_.reset();
        }
        ListingScope(const ListingScope&) = delete;
        ListingScope& operator=(const ListingScope&) = delete;
    };
    struct SharedListing {
        QString directory;
        snapshot_files::Listing listing;
    };
    std::optional<SharedListing> shared_listing_;
    int listing_scopes_ = 0;
    snapshot_files::Listing listing(const QString& directory);

    FindIndex* find_index_ = nullptr;
    /// The flag chosen with a chip, as its entry of the `flags` setting; empty for none.
    QString find_flag_;
    std::vector<int> shown_rows_;
    /// The snapshot of each row, as the table was last filled.
    QStringList find_srcs_;
    /// Their entries in the index, as of the index's change `find_generation_`.
    std::vector<const FindEntry*> find_entries_;
    quint64 find_generation_ = 0;
    /// Whether rows are hidden now, and the scroll position and slider range from before.
    bool find_applied_ = false;
    QString find_key_;
    int find_scroll_ = 0;
    int find_slider_max_ = 1;
    void create_find_widgets();
    QVBoxLayout* create_find_layout();
    void create_find_signals();
    /// After each filling of the table: the index learns the listing, and the rows shown follow.
    void refresh_find(const QString& directory, const QStringList& srcs);

    int fade_connections_ = 0;
    /// The child a drag began on (none for the window itself), while a button is held.
    QPointer<QWidget> drag_from_;
    bool dragging_ = false;
    void route_keys();
    /// The window's own Python object while it fades out, so that a holder dropped from the slot
    /// meanwhile cannot delete it before the last step.
    pybind11::object keep_alive_during_fade_;
    void create_dir_signals();
    void create_settings_signals();
    void create_table_signals();
    void load_visible_thumbs(bool only_unseen, int extra_items_to_load = 5);
    bool make_directories();
    void build_ui();
    void create_widgets();
    /// The list of thumbnails: a table that keeps only the widgets of the rows in view shown.
    QTableWidget* create_thumbnail_table();
    void create_settings_widgets();
    void create_layouts();
    void create_settings_layouts();
    void create_signals();
    void create_tooltips();
    QIcon icon(const char* key) const;
    QToolButton* tool_button(const char* icon_key);
};

/// The browser's help addresses: the user guide installed with the package, and the support page
/// fixed at build time.
namespace help {
/// The user guide beside the package's files, as a local file address.
QUrl documentation_url();
/// The support page.
QUrl support_url();
} // namespace help

} // namespace cobaltrig
