#include "looks/look_diff_window.h"

#include "frame/guarded.h"
#include "frame/siblings.h"
#include "frame/window_slots.h"
#include "looks/applying.h"
#include "looks/look_knobs.h"
#include "looks/looks_slider.h"
#include "looks/storing.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QFontMetrics>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPalette>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <unordered_set>

namespace cobaltrig::looks {

namespace py = pybind11;

namespace {

// Knobs that say where and what the node is rather than how it looks: applying a look keeps the
// node's own (the label of a stored copy holds its uid), so they never differ in a way that counts.
const std::unordered_set<std::string>& bookkeeping_knobs() {
    static const std::unordered_set<std::string> names = {
        "name",      "xpos",          "ypos",         "selected",    "label",
        "looks",     "look_uid",      "look_new",     "look_update", "look_delete",
        "preset_import", "preset_export", "look_divider", "look_knob_values"};
    return names;
}

// Knob classes that hold no value an artist sets: tabs, labels, buttons, script holders.
const std::unordered_set<std::string>& valueless_classes() {
    static const std::unordered_set<std::string> classes = {
        "Tab_Knob",      "Text_Knob",        "PyScript_Knob",   "PythonKnob",
        "Obsolete_Knob", "BeginTabGroup_Knob", "EndTabGroup_Knob", "Help_Knob"};
    return classes;
}

// One word of a knob's script text; braced words hold a list, an expression or a curve.
struct Word {
    std::string text;
    bool braced = false;
};

// The host's script words: blanks separate, {braces} nest, "quotes" and backslashes escape.
std::vector<Word> split_words(const std::string& text) {
    std::vector<Word> words;
    const std::size_t n = text.size();
    std::size_t i = 0;
    while (i < n) {
        if (std::isspace(static_cast<unsigned char>(text[i]))) {
            ++i;
        } else if (text[i] == '{') {
            int depth = 1;
            std::size_t j = i + 1;
            while (j < n && depth > 0) {
                if (text[j] == '\\')
                    ++j;
                else if (text[j] == '{')
                    ++depth;
                else if (text[j] == '}')
                    --depth;
                ++j;
            }
            words.push_back({text.substr(i + 1, (depth ? j : j - 1) - i - 1), true});
            i = j;
        } else if (text[i] == '"') {
            std::string out;
            std::size_t j = i + 1;
            for (; j < n && text[j] != '"'; ++j) {
                if (text[j] == '\\' && j + 1 < n)
                    ++j;
                out += text[j];
            }
            words.push_back({out, false});
            i = j + 1;
        } else {
            std::size_t j = i;
            while (j < n && !std::isspace(static_cast<unsigned char>(text[j])))
                ++j;
            words.push_back({text.substr(i, j - i), false});
            i = j;
        }
    }
    return words;
}

std::optional<double> as_number(const Word& word) {
    if (word.braced || word.text.empty())
        return std::nullopt;
    char* end = nullptr;
    const double value = std::strtod(word.text.c_str(), &end);
    if (end != word.text.c_str() + word.text.size())
        return std::nullopt;
    return value;
}

// Three decimals, as the host's panels show a value by default, without trailing zeros.
QString rounded(double value) {
    QString text = QString::number(value, 'f', 3);
    if (text.contains(QLatin1Char('.'))) {
        while (text.endsWith(QLatin1Char('0')))
            text.chop(1);
        if (text.endsWith(QLatin1Char('.')))
            text.chop(1);
    }
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

// The keys of a curve ("curve x1 0 s0 x10 1"): the plain numbers; frames and slopes carry a letter.
std::optional<int> curve_keys(const Word& word) {
    if (!word.braced)
        return std::nullopt;
    const std::vector<Word> inner = split_words(word.text);
    if (inner.empty() || inner.front().braced || inner.front().text != "curve")
        return std::nullopt;
    return static_cast<int>(std::count_if(inner.begin() + 1, inner.end(),
                                          [](const Word& w) { return as_number(w).has_value(); }));
}

int colour_components(const std::string& knob_class) {
    if (knob_class == "Color_Knob")
        return 3;
    if (knob_class == "AColor_Knob")
        return 4;
    return 1;
}

std::optional<long long> look_number(const std::string& index) {
    char* end = nullptr;
    const long long value = std::strtoll(index.c_str(), &end, 10);
    if (index.empty() || end != index.c_str() + index.size())
        return std::nullopt;
    return value;
}

// What a look's uid leads to: the stored copy, or why there is none to compare with.
struct Resolved {
    std::optional<host::Node> copy;
    std::string reason;
};

void gather_nested_labels(const host::Node& group, std::unordered_set<std::string>& labels) {
    for (const host::Node& inner : group.nodes()) {
        if (std::optional<host::Knob> label = inner.knob("label"))
            labels.insert(label->getValueText());
        if (inner.Class() == "Group")
            gather_nested_labels(inner, labels);
    }
}

// Finds the stored copies of `uids` in the container of the node's own graph, as applying does:
// only copies that stand directly in the container are applied, so those are the ones compared.
std::vector<Resolved> resolve_copies(const host::Node& node, const std::vector<std::string>& uids) {
    std::vector<Resolved> resolved(uids.size());
    std::optional<host::Node> container;
    {
        host::GroupContext here(host::parentGroup(node));
        container = find_look_container();
    }
    std::unordered_map<std::string, host::Node> direct;
    std::vector<host::Node> groups;
    if (container) {
        for (const host::Node& copy : container->nodes()) {
            // Several copies with one uid: applying takes the last, and so does the comparison.
            if (std::optional<host::Knob> label = copy.knob("label"))
                direct.insert_or_assign(label->getValueText(), copy);
            if (copy.Class() == "Group")
                groups.push_back(copy);
        }
    }
    std::optional<std::unordered_set<std::string>> nested;
    const std::string node_class = node.Class();
    for (std::size_t i = 0; i < uids.size(); ++i) {
        auto found = direct.find(uids[i]);
        if (found != direct.end()) {
            const std::string copy_class = found->second.Class();
            if (copy_class == node_class)
                resolved[i].copy = found->second;
            else
                resolved[i].reason = "stored copy is a " + copy_class + ", not a " + node_class;
            continue;
        }
        if (!nested) {
            nested.emplace();
            for (const host::Node& group : groups)
                gather_nested_labels(group, *nested);
        }
        resolved[i].reason =
            nested->count(uids[i]) ? "stored copy is inside a Group" : "stored copy is missing";
    }
    return resolved;
}

bool same_value(const ComparedKnobs& a, const ComparedKnobs& b, const std::string& name) {
    auto in_a = a.script.find(name);
    auto in_b = b.script.find(name);
    if (in_a == a.script.end() || in_b == b.script.end())
        return in_a == a.script.end() && in_b == b.script.end();
    return in_a->second == in_b->second;
}

// Every knob name of `now` and the looks that can be compared, in the node's order, then in the
// order the looks bring them.
std::vector<std::string> differing_knobs(const ComparedKnobs& now,
                                         const std::vector<const ComparedKnobs*>& looks) {
    std::vector<std::string> names;
    std::unordered_set<std::string> seen;
    auto consider = [&](const std::string& name) {
        if (!seen.insert(name).second)
            return;
        for (const ComparedKnobs* look : looks)
            if (!same_value(now, *look, name)) {
                names.push_back(name);
                return;
            }
    };
    for (const std::string& name : now.names)
        consider(name);
    for (const ComparedKnobs* look : looks)
        for (const std::string& name : look->names)
            consider(name);
    return names;
}

const QString kAbsent = QStringLiteral("-");

} // namespace

QString shown_value(const std::string& script, const std::string& knob_class) {
    std::vector<Word> channels = split_words(script);
    auto numeric_or_braced = [](const Word& w) { return w.braced || as_number(w).has_value(); };
    // The host writes a list of channels between braces; one braced word that is no list is an
    // expression or a curve of the whole knob.
    if (channels.size() == 1 && channels.front().braced) {
        std::vector<Word> inner = split_words(channels.front().text);
        if (!inner.empty() && std::all_of(inner.begin(), inner.end(), numeric_or_braced))
            channels = std::move(inner);
    }
    if (channels.empty() || !std::all_of(channels.begin(), channels.end(), numeric_or_braced))
        return QString::fromStdString(script);

    std::optional<int> keys;
    for (const Word& channel : channels)
        if (std::optional<int> curve = curve_keys(channel))
            keys = std::max(keys.value_or(0), *curve);
    if (keys)
        return *keys == 1 ? QStringLiteral("animated (1 key)")
                          : QStringLiteral("animated (%1 keys)").arg(*keys);

    // A colour whose channels are all equal is written as one number; the panel shows them all.
    if (channels.size() == 1 && !channels.front().braced)
        channels.resize(static_cast<std::size_t>(colour_components(knob_class)), channels.front());
    QStringList parts;
    for (const Word& channel : channels)
        parts << (channel.braced ? QString::fromStdString(channel.text)
                                 : rounded(*as_number(channel)));
    return parts.join(QLatin1Char(' '));
}

ComparedKnobs compared_knobs(const host::Node& node) {
    ComparedKnobs result;
    const py::object invisible = host::knobFlag("INVISIBLE");
    for (const auto& [name, knob] : node.knobs()) {
        if (is_look_knob_name(name) || bookkeeping_knobs().count(name))
            continue;
        const std::string knob_class = knob.Class();
        if (valueless_classes().count(knob_class) || knob.getFlag(invisible))
            continue;
        std::string script = knob.toScript();
        result.shown.emplace(name, shown_value(script, knob_class));
        result.script.emplace(name, std::move(script));
        result.names.push_back(name);
    }
    return result;
}

std::vector<LookColumn> read_looks(const host::Node& node) {
    std::vector<LookColumn> looks;
    for (const host::Knob& knob : get_preset_knobs(node))
        looks.push_back({knob.label(), knob.tooltip(), {}, {}});
    std::stable_sort(looks.begin(), looks.end(), [](const LookColumn& a, const LookColumn& b) {
        const std::optional<long long> na = look_number(a.index), nb = look_number(b.index);
        if (na && nb)
            return *na < *nb;
        return na.has_value() && !nb.has_value();
    });
    std::vector<std::string> uids;
    for (const LookColumn& look : looks)
        uids.push_back(look.uid);
    const std::vector<Resolved> copies = resolve_copies(node, uids);
    for (std::size_t i = 0; i < looks.size(); ++i) {
        if (copies[i].copy)
            looks[i].knobs = compared_knobs(*copies[i].copy);
        else
            looks[i].reason = copies[i].reason;
    }
    return looks;
}

std::optional<int> count_changed_knobs(const host::Node& node, const std::string& uid,
                                       std::string* reason) {
    const Resolved copy = resolve_copies(node, {uid}).front();
    if (!copy.copy) {
        if (reason)
            *reason = copy.reason;
        return std::nullopt;
    }
    const ComparedKnobs look = compared_knobs(*copy.copy);
    return static_cast<int>(differing_knobs(compared_knobs(node), {&look}).size());
}

// --- the window ---

LookDiffWindow::LookDiffWindow(const host::Node& node) {
    setObjectName(QStringLiteral("LookDiffWindow"));
    setWindowTitle(QStringLiteral("compare looks"));
    node_ = node.object();
    node_name_ = node.fullName();
    build_ui();
    resize(720, 420);
}

void LookDiffWindow::build_ui() {
    create_widgets();
    create_layouts();
    siblings::set_style_sheet(this);
    create_signals();
}

void LookDiffWindow::create_widgets() {
    label_node = new QLabel(this);
    label_node->setObjectName(QStringLiteral("label_node"));
    push_refresh = new QPushButton(QStringLiteral("refresh"), this);
    push_refresh->setObjectName(QStringLiteral("push_refresh"));
    push_refresh->setToolTip(QStringLiteral("read the node and its looks again"));

    table_looks = new QTableWidget(this);
    table_looks->setObjectName(QStringLiteral("table_looks"));
    table_looks->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_looks->setSelectionMode(QAbstractItemView::SingleSelection);
    table_looks->setWordWrap(false);
    table_looks->horizontalHeader()->setToolTip(
        QStringLiteral("double-click a look to apply it to the node"));

    menu_cell = new QMenu(this);
    menu_cell->setObjectName(QStringLiteral("menu_cell"));
    action_set_value = menu_cell->addAction(QStringLiteral("set this value on the node"));
    action_set_value->setObjectName(QStringLiteral("action_set_value"));
}

void LookDiffWindow::create_layouts() {
    layout_top = new QHBoxLayout();
    layout_top->addWidget(label_node, 1);
    layout_top->addWidget(push_refresh);
    layout_master = new QVBoxLayout(this);
    layout_master->addLayout(layout_top);
    layout_master->addWidget(table_looks);
    setLayout(layout_master);
}

void LookDiffWindow::create_signals() {
    connect_guarded(push_refresh, &QPushButton::clicked, this, "LookDiffWindow.refresh",
                    [this] { refresh(); });
    connect_guarded(table_looks->horizontalHeader(), &QHeaderView::sectionDoubleClicked, this,
                    "LookDiffWindow.apply_look", [this](int column) { apply_look(column); });
    connect_guarded(action_set_value, &QAction::triggered, this,
                    "LookDiffWindow.set_value_from_look",
                    [this] { set_value_from_look(menu_row_, menu_column_); });
    // The context menu of a cell comes from the viewport, where the pointer is.
    table_looks->viewport()->installEventFilter(this);
}

void LookDiffWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    // The node may have changed in the host while the window was hidden; no polling meanwhile.
    guarded("LookDiffWindow.refresh", [this] { refresh(); });
}

bool LookDiffWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched != table_looks->viewport())
        return QWidget::eventFilter(watched, event);
    // The menu opens on the right button's press on every platform; the context menu event that
    // some platforms send after it is then already answered. From the keyboard it opens at the
    // current cell.
    if (event->type() == QEvent::MouseButtonPress &&
        static_cast<QMouseEvent*>(event)->button() == Qt::RightButton) {
        const QPoint pos = static_cast<QMouseEvent*>(event)->pos();
        guarded("LookDiffWindow.open_cell_menu", [&] { open_cell_menu(pos); });
        return true;
    }
    if (event->type() == QEvent::ContextMenu) {
        if (static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard) {
            const QPoint pos = table_looks->visualRect(table_looks->currentIndex()).center();
            guarded("LookDiffWindow.open_cell_menu", [&] { open_cell_menu(pos); });
        }
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

std::optional<host::Node> LookDiffWindow::live_node() {
    if (node_) {
        try {
            host::Node node(node_.get());
            node.name();
            return node;
        } catch (py::error_already_set& e) {
            // Only a dead handle means the node was replaced; anything else is a real failure.
            if (!e.matches(PyExc_ValueError))
                throw;
        }
    }
    // Applying a look from its button replaces the node under the same name.
    std::optional<host::Node> found = host::toNode("root." + node_name_);
    node_ = found ? found->object() : py::object();
    return found;
}

py::object LookDiffWindow::node() {
    return live_node() ? node_.get() : py::object(py::none());
}

void LookDiffWindow::refresh() {
    looks_.clear();
    now_ = {};
    rows_.clear();
    if (std::optional<host::Node> node = live_node()) {
        node_name_ = node->fullName();
        now_ = compared_knobs(*node);
        looks_ = read_looks(*node);
        std::vector<const ComparedKnobs*> comparable;
        for (const LookColumn& look : looks_)
            if (look.reason.empty())
                comparable.push_back(&look.knobs);
        rows_ = differing_knobs(now_, comparable);
    }
    fill_table();
}

void LookDiffWindow::fill_table() {
    const QString name = QString::fromStdString(node_name_);
    if (!node_)
        label_node->setText(QStringLiteral("%1 no longer exists").arg(name));
    else if (looks_.empty())
        label_node->setText(QStringLiteral("%1 has no looks").arg(name));
    else if (rows_.empty())
        label_node->setText(QStringLiteral("%1: no knob differs from its looks").arg(name));
    else
        label_node->setText(QStringLiteral("%1: %2 %3 differ from its looks")
                                .arg(name)
                                .arg(static_cast<qlonglong>(rows_.size()))
                                .arg(rows_.size() == 1 ? QLatin1String("knob")
                                                       : QLatin1String("knobs")));

    table_looks->setUpdatesEnabled(false);
    table_looks->clear();
    table_looks->setColumnCount(static_cast<int>(looks_.size()) + 1);
    table_looks->setRowCount(static_cast<int>(rows_.size()));

    auto* now_header = new QTableWidgetItem(QStringLiteral("now"));
    now_header->setToolTip(QStringLiteral("the node as it is"));
    table_looks->setHorizontalHeaderItem(0, now_header);
    for (std::size_t c = 0; c < looks_.size(); ++c) {
        const LookColumn& look = looks_[c];
        QString text = QStringLiteral("look %1").arg(QString::fromStdString(look.index));
        auto* header = new QTableWidgetItem();
        if (look.reason.empty()) {
            header->setToolTip(QStringLiteral("double-click to apply look %1")
                                   .arg(QString::fromStdString(look.index)));
        } else {
            text += QLatin1Char('\n') + QString::fromStdString(look.reason);
            header->setToolTip(QStringLiteral("cannot be compared: %1")
                                   .arg(QString::fromStdString(look.reason)));
        }
        header->setText(text);
        table_looks->setHorizontalHeaderItem(static_cast<int>(c) + 1, header);
    }

    const QColor dimmed = palette().color(QPalette::Disabled, QPalette::Text);
    for (std::size_t r = 0; r < rows_.size(); ++r) {
        const std::string& knob = rows_[r];
        const int row = static_cast<int>(r);
        table_looks->setVerticalHeaderItem(row, new QTableWidgetItem(QString::fromStdString(knob)));
        auto now_value = now_.shown.find(knob);
        table_looks->setItem(
            row, 0, new QTableWidgetItem(now_value != now_.shown.end() ? now_value->second : kAbsent));
        for (std::size_t c = 0; c < looks_.size(); ++c) {
            const LookColumn& look = looks_[c];
            auto* cell = new QTableWidgetItem();
            if (look.reason.empty()) {
                auto value = look.knobs.shown.find(knob);
                cell->setText(value != look.knobs.shown.end() ? value->second : kAbsent);
                // What the look would leave as it is recedes; what it changes stands out.
                if (same_value(now_, look.knobs, knob))
                    cell->setForeground(dimmed);
            } else {
                cell->setForeground(dimmed);
            }
            table_looks->setItem(row, static_cast<int>(c) + 1, cell);
        }
    }
    size_columns();
    table_looks->setUpdatesEnabled(true);
}

void LookDiffWindow::size_columns() {
    // Measuring every cell as resizeColumnsToContents does costs more than the rest of a large
    // table together: the longest text of a column stands for it, which is close enough for the
    // short values a panel shows.
    const QFontMetrics metrics = table_looks->fontMetrics();
    const QFontMetrics header_metrics = table_looks->horizontalHeader()->fontMetrics();
    for (int column = 0; column < table_looks->columnCount(); ++column) {
        QString longest;
        for (int row = 0; row < table_looks->rowCount(); ++row) {
            const QString text = table_looks->item(row, column)->text();
            if (text.size() > longest.size())
                longest = text;
        }
        int width = metrics.horizontalAdvance(longest);
        for (const QString& line :
             table_looks->horizontalHeaderItem(column)->text().split(QLatin1Char('\n')))
            width = std::max(width, header_metrics.horizontalAdvance(line));
        table_looks->setColumnWidth(column, std::clamp(width + 24, 60, 360));
    }
}

void LookDiffWindow::apply_look(int column) {
    if (column < 1 || column > static_cast<int>(looks_.size()))
        return;
    std::optional<host::Node> node = live_node();
    if (!node) {
        fill_table();
        return;
    }
    const LookColumn look = looks_[static_cast<std::size_t>(column - 1)];
    // The look button's own operation, so the table can never apply a look differently.
    if (std::optional<host::Node> replaced = apply_preset(*node, look.uid, look.index)) {
        node_ = replaced->object();
        node_name_ = replaced->fullName();
    }
    refresh();
}

void LookDiffWindow::set_value_from_look(int row, int column) {
    if (row < 0 || row >= static_cast<int>(rows_.size()) || column < 1 ||
        column > static_cast<int>(looks_.size()))
        return;
    const LookColumn& look = looks_[static_cast<std::size_t>(column - 1)];
    const std::string knob_name = rows_[static_cast<std::size_t>(row)];
    auto value = look.knobs.script.find(knob_name);
    std::optional<host::Node> node = live_node();
    if (!look.reason.empty() || value == look.knobs.script.end() || !node)
        return;
    std::optional<host::Knob> knob = node->knob(knob_name);
    if (!knob) {
        host::message(node->name() + " has no knob " + knob_name + " to set");
        return;
    }
    const std::string text = value->second;
    {
        host::UndoGroup step("Set " + knob_name + " from look " + look.index);
        knob->fromScript(text);
    }
    refresh();
}

void LookDiffWindow::open_cell_menu(const QPoint& viewport_pos) {
    const QModelIndex index = table_looks->indexAt(viewport_pos);
    if (!index.isValid() || index.column() < 1)
        return;
    menu_row_ = index.row();
    menu_column_ = index.column();
    table_looks->setCurrentIndex(index);
    const LookColumn& look = looks_[static_cast<std::size_t>(menu_column_ - 1)];
    const std::string& knob = rows_[static_cast<std::size_t>(menu_row_)];
    // Only a value the look has, for a knob the node has, that differs from the node's.
    action_set_value->setEnabled(look.reason.empty() && look.knobs.script.count(knob) &&
                                 now_.script.count(knob) && !same_value(now_, look.knobs, knob));
    menu_cell->popup(table_looks->viewport()->mapToGlobal(viewport_pos));
}

py::object show_look_diff() {
    const std::vector<host::Node> sel = selected_nodes_at_any_depth();
    if (sel.empty()) {
        host::message("Select a node to compare its looks.");
        return py::none();
    }
    // Of several selected nodes, the first that has looks: a Group around the node, selected in
    // the graph above it, must not stand in for it.
    auto with_looks = std::find_if(sel.begin(), sel.end(), [](const host::Node& candidate) {
        return !get_preset_knobs(candidate).empty();
    });
    const host::Node node = with_looks != sel.end() ? *with_looks : sel.front();
    // Made through the bound class, so that a new window never takes over the Python object of a
    // deleted one that happened to live at the same address.
    return slots::open_window("lookdiff", [&node] {
        return slots::module().attr("LookDiffWindow")(node.object());
    });
}

} // namespace cobaltrig::looks
