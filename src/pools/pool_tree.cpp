#include "pools/pool_tree.h"

#include "frame/qt_bridge.h"
#include "frame/siblings.h"
#include "pools/pool_paths.h"

#include <QFileInfo>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QSet>
#include <QTreeWidget>
#include <QTreeWidgetItem>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

#include <cstdint>
#include <memory>

namespace cobaltrig::pools {

namespace py = pybind11;

namespace {

std::string iconPath(const IconTable& icons, const char* key) {
    auto it = icons.find(key);
    return it == icons.end() ? std::string() : it->second;
}

// The icon a directory item is given by name; other folders pass the empty text and get the
// builder's folder icon.
std::string dirIcon(const QString& name, const IconTable& icons) {
    if (name == QLatin1String("nodes"))
        return iconPath(icons, "icon_nodes");
    if (name == QLatin1String("toolsets"))
        return iconPath(icons, "icon_toolsets");
    return {};
}

// Makes the items of one build. The native maker builds the tree detached and hands it to the view
// in one insertion; a view told of every item one by one relays itself out thousands of times.
// Expansion and selection need the view, so the native maker applies them once the items are in.
class ItemMaker {
public:
    virtual ~ItemMaker() = default;
    /// An item under `parent`, or the pool item when `parent` is null. `expanded`, `is_dir` and
    /// `icon` are nothing where the builder's own defaults hold.
    virtual QTreeWidgetItem* make(QTreeWidgetItem* parent, const QString& label,
                                  const QString& path, bool disabled, bool selected,
                                  std::optional<bool> expanded, std::optional<bool> is_dir,
                                  std::optional<std::string> icon) = 0;
    virtual void expand(QTreeWidgetItem* item) = 0;
    /// Selects the item and makes it current; the last one made current stays current.
    virtual void make_current(QTreeWidgetItem* item) = 0;
    /// Puts what was made into the tree.
    virtual void finish() = 0;
};

class NativeMaker : public ItemMaker {
public:
    NativeMaker(QTreeWidget* tree, const IconTable& icons)
        : tree_(tree), folder_(iconPath(icons, "icon_folder")),
          preset_(iconPath(icons, "icon_preset")) {}

    ~NativeMaker() override { delete top_; }

    QTreeWidgetItem* make(QTreeWidgetItem* parent, const QString& label, const QString& path,
                          bool disabled, bool selected, std::optional<bool> expanded,
                          std::optional<bool> is_dir, std::optional<std::string> icon) override {
        auto* item = parent ? new QTreeWidgetItem(parent, QStringList{label})
                            : new QTreeWidgetItem(QStringList{label});
        if (!parent)
            top_ = item;
        std::string image = icon.value_or(std::string());
        if (image.empty())
            image = is_dir.value_or(false) ? folder_ : preset_;
        const QIcon& shown = cached(image);
        dress_tree_item(item, path, disabled, false, false, shown);
        // A row is as high as its icon or its line of text; only a missing image or a label that
        // is empty or more than one line can make one row differ from the others.
        if (shown.isNull() || label.isEmpty() || label.contains(QLatin1Char('\n')) ||
            label.contains(QLatin1Char('\r')))
            uniform_ = false;
        if (selected)
            selected_.push_back(item);
        if (expanded.value_or(false))
            expanded_.push_back(item);
        return item;
    }

    void expand(QTreeWidgetItem* item) override { expanded_.push_back(item); }
    void make_current(QTreeWidgetItem* item) override { current_.push_back(item); }

    void finish() override {
        if (!top_)
            return;
        // With rows of one height the view skips measuring every row before it paints: a tree of
        // thousands of open rows paints in a fraction of a millisecond instead of several. It
        // changes nothing on screen as long as every row really has the height of the first:
        // the same font, one line of text, and images of one size at any icon size the slider
        // offers.
        const QSize largest(40, 40);
        QSize image;
        for (const QIcon& icon : qAsConst(icons_)) {
            if (image.isValid() && icon.actualSize(largest) != image)
                uniform_ = false;
            image = icon.actualSize(largest);
        }
        tree_->setUniformRowHeights(uniform_);
        tree_->addTopLevelItem(top_);
        top_ = nullptr;
        for (QTreeWidgetItem* item : expanded_)
            item->setExpanded(true);
        for (QTreeWidgetItem* item : selected_)
            item->setSelected(true);
        for (QTreeWidgetItem* item : current_)
            tree_->setCurrentItem(item);
    }

private:
    // A QIcon made from a file reads the image's header; thousands of items share a few images.
    const QIcon& cached(const std::string& path) {
        const QString key = QString::fromStdString(path);
        auto it = icons_.find(key);
        if (it == icons_.end())
            it = icons_.insert(key, QIcon(key));
        return it.value();
    }

    QTreeWidget* tree_;
    std::string folder_;
    std::string preset_;
    QTreeWidgetItem* top_ = nullptr; // owned until it is in the tree
    QHash<QString, QIcon> icons_;
    bool uniform_ = true;
    std::vector<QTreeWidgetItem*> expanded_;
    std::vector<QTreeWidgetItem*> selected_;
    std::vector<QTreeWidgetItem*> current_;
};

// A studio's own `helper.build_tree_widget_item`, called for every item as the tree asks for it.
class PythonMaker : public ItemMaker {
public:
    PythonMaker(QTreeWidget* tree, DirItems& dirlist) : tree_(tree), dirlist_(dirlist) {}

    QTreeWidgetItem* make(QTreeWidgetItem* parent, const QString& label, const QString& path,
                          bool disabled, bool selected, std::optional<bool> expanded,
                          std::optional<bool> is_dir, std::optional<std::string> icon) override {
        py::object made = siblings::build_tree_item(
            parent ? wrap_item(parent) : bridge::wrap(tree_), label.toStdString(),
            path.toStdString(), disabled, selected, expanded, is_dir, std::move(icon));
        QTreeWidgetItem* item = nullptr;
        if (py::isinstance(made, bridge::pyside_class("QTreeWidgetItem")))
            item = bridge::unwrapTreeItem(made);
        if (!item)
            throw py::type_error("helper.build_tree_widget_item returned " +
                                 py::repr(made).cast<std::string>() + ", not a QTreeWidgetItem");
        dirlist_.python_items.push_back(std::move(made));
        return item;
    }

    void expand(QTreeWidgetItem* item) override { item->setExpanded(true); }
    void make_current(QTreeWidgetItem* item) override { tree_->setCurrentItem(item); }
    void finish() override {}

private:
    QTreeWidget* tree_;
    DirItems& dirlist_;
};

// Why the pool can't be shown, in the words its user needs; empty when it can.
QString poolProblem(const QString& pool_path) {
    if (pool_path.isEmpty())
        return QStringLiteral("No folder is known for this pool. Add it again under its name.");
    const QFileInfo info(pool_path);
    if (!info.exists())
        return QStringLiteral("The pool folder '%1' doesn't exist. Is its drive connected?")
            .arg(pool_path);
    if (!info.isDir())
        return QStringLiteral("The pool '%1' is not a folder.").arg(pool_path);
    if (!info.isReadable() || !info.isExecutable())
        return QStringLiteral("The pool folder '%1' can't be read: no permission.").arg(pool_path);
    return {};
}

// An empty tree says nothing by itself; a line over it says why it is empty.
void showPoolProblem(QTreeWidget* tree, const QString& problem) {
    auto* label = tree->viewport()->findChild<QLabel*>(QStringLiteral("label_pool_problem"),
                                                       Qt::FindDirectChildrenOnly);
    if (problem.isEmpty()) {
        if (label)
            label->hide();
        return;
    }
    if (!label) {
        label = new QLabel(tree->viewport());
        label->setObjectName(QStringLiteral("label_pool_problem"));
        label->setAlignment(Qt::AlignCenter);
        label->setWordWrap(true);
        auto* layout = new QVBoxLayout(tree->viewport());
        layout->addWidget(label);
    }
    label->setText(problem);
    label->show();
}

// The module's own builder is in place unless a studio or a test has replaced it.
bool builderReplaced() {
    py::module_ helper = siblings::helper();
    if (!py::hasattr(helper, "_BUILD_TREE_WIDGET_ITEM"))
        return true;
    return !helper.attr("build_tree_widget_item").is(helper.attr("_BUILD_TREE_WIDGET_ITEM"));
}

} // namespace

void DirItems::clear() {
    items.clear();
    python_items.clear();
}

void DirItems::abandon() {
    items.clear();
    for (py::object& item : python_items)
        item.release();
    python_items.clear();
}

void dress_tree_item(QTreeWidgetItem* item, const QString& path, bool disabled, bool selected,
                     bool expanded, const QIcon& icon) {
    item->setData(0, Qt::UserRole, path);
    item->setIcon(0, icon);
    item->setDisabled(disabled);
    item->setSelected(selected);
    item->setExpanded(expanded);
}

int fill_pool_tree(QTreeWidget* tree, QWidget* window, DirItems& dirlist, const QString& pool_path,
                   const DirRule& rule, const IconTable& icons) {
    clear_pool_tree(tree);
    tree->header()->close();
    dirlist.clear();
    const QString problem = poolProblem(pool_path);
    showPoolProblem(tree, problem);
    if (!problem.isEmpty())
        return 0;

    std::unique_ptr<ItemMaker> maker;
    if (builderReplaced()) {
        // A studio's items may be of any height.
        tree->setUniformRowHeights(false);
        maker = std::make_unique<PythonMaker>(tree, dirlist);
    } else
        maker = std::make_unique<NativeMaker>(tree, icons);

    const QString pool = normalise(pool_path);
    QTreeWidgetItem* top = maker->make(nullptr, lastPiece(pool), pool, false, false, std::nullopt,
                                       true, iconPath(icons, "icon_pool"));
    maker->expand(top);
    tree->setRootIsDecorated(false);
    dirlist.items.insert(pool, top);

    int count = 0;
    try {
        walk(pool, [&](const WalkStep& step) {
            const QString root = normalise(step.root);
            QTreeWidgetItem* parent = dirlist.items.value(root);
            QStringList descend;
            // A directory without an item has nothing to show below it (the walk is pruned there).
            if (!parent)
                return descend;
            for (const QString& name : step.dirs) {
                if (isHiddenDir(name))
                    continue;
                const std::optional<DirState> state = rule(name, root);
                if (!state)
                    continue;
                const QString path = normalise(join(root, name));
                QTreeWidgetItem* item =
                    maker->make(parent, name, path, state->disabled, state->selected,
                                state->expanded, true, dirIcon(name, icons));
                // When several folders are selected, the last one visited stays current.
                if (state->selected)
                    maker->make_current(item);
                dirlist.items.insert(path, item);
                ++count;
                descend << name;
            }
            for (const QString& file : step.files)
                if (isPresetFile(file))
                    maker->make(parent, presetLabel(file), join(root, file), false, false,
                                std::nullopt, std::nullopt, std::nullopt);
            return descend;
        });
        maker->finish();
    } catch (...) {
        // The maker still owns a tree it did not hand over; its items go with it.
        dirlist.clear();
        throw;
    }
    window->resize(600, 400 + 10 * count);
    return count;
}

void clear_pool_tree(QTreeWidget* tree) {
    if (tree->topLevelItemCount() == 0)
        return;
    if (Py_IsInitialized()) {
        // The binding tells its own items' objects when they die; items made here need telling. One
        // look at every live Python object of the process is cheaper than one per item.
        py::gil_scoped_acquire gil;
        try {
            QSet<const QTreeWidgetItem*> mine;
            for (QTreeWidgetItemIterator it(tree); *it; ++it)
                mine.insert(*it);
            py::module_ shiboken = bridge::shiboken();
            py::object item_class = bridge::pyside_class("QTreeWidgetItem");
            for (py::handle wrapper : shiboken.attr("getAllValidWrappers")()) {
                if (!py::isinstance(wrapper, item_class) ||
                    shiboken.attr("createdByPython")(wrapper).cast<bool>())
                    continue;
                const auto* item =
                    reinterpret_cast<const QTreeWidgetItem*>(bridge::cpp_pointer(wrapper));
                if (mine.contains(item))
                    shiboken.attr("invalidate")(wrapper);
            }
        } catch (py::error_already_set&) {
            // Without the means to tell them, stale objects are no worse than before.
        }
    }
    tree->clear();
}

py::object wrap_item(QTreeWidgetItem* item) {
    if (!item)
        return py::none();
    // For an item that already has a Python object, shiboken gives that same object back.
    return bridge::shiboken().attr("wrapInstance")(reinterpret_cast<std::uintptr_t>(item),
                                                   bridge::pyside_class("QTreeWidgetItem"));
}

py::dict dir_items_to_python(const DirItems& dirlist) {
    py::dict result;
    for (auto it = dirlist.items.constBegin(); it != dirlist.items.constEnd(); ++it)
        result[py::str(it.key().toStdString())] = wrap_item(it.value());
    return result;
}

} // namespace cobaltrig::pools
