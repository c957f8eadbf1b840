#include "looks/looks_slider.h"

#include "frame/guarded.h"
#include "frame/siblings.h"
#include "frame/window_slots.h"
#include "looks/applying.h"
#include "looks/look_diff_window.h"
#include "looks/look_knobs.h"

#include <QCursor>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPoint>
#include <QSize>
#include <QSlider>
#include <QStringList>

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace cobaltrig::looks {

namespace py = pybind11;

namespace {

// Qt's code of the letter E, the key the slider is usually held on.
constexpr int kKeyE = 69;

// A group's own selected nodes first, then those of each Group inside it, in the host's order.
// One host call per group rather than one per node keeps a step cheap in a large script. Stored
// copies in a look container are never stepped, so containers are not entered.
void gather_selected(const host::Node& group, std::vector<host::Node>& found) {
    std::vector<host::Node> inner;
    {
        host::GroupContext inside(group);
        for (host::Node& node : host::selectedNodes())
            found.push_back(node);
        inner = host::allNodes(std::string("Group"));
    }
    for (const host::Node& child : inner)
        if (!child.knob("looks_group"))
            gather_selected(child, found);
}

// "Grade1: 3 knobs", or why the look's copy cannot be compared. Reading the copy never fails the
// step: a look that cannot be counted is still applied.
QString look_changes_text(const host::Node& node, const std::string& uid) {
    const QString name = QString::fromStdString(node.name());
    try {
        std::string reason;
        if (const std::optional<int> count = count_changed_knobs(node, uid, &reason))
            return QStringLiteral("%1: %2 %3")
                .arg(name)
                .arg(*count)
                .arg(*count == 1 ? QLatin1String("knob") : QLatin1String("knobs"));
        return QStringLiteral("%1: %2").arg(name, QString::fromStdString(reason));
    } catch (py::error_already_set&) {
        // The step itself stays silent about failures; so does its tool tip.
    }
    return QStringLiteral("%1: not counted").arg(name);
}

int clamped_to_int(long long value) {
    return static_cast<int>(std::clamp<long long>(value, std::numeric_limits<int>::min(),
                                                  std::numeric_limits<int>::max()));
}

} // namespace

std::vector<host::Node> selected_nodes_at_any_depth() {
    std::vector<host::Node> found;
    gather_selected(host::thisGroup(), found);
    return found;
}

int get_max_look_version() {
    int most = 1;
    for (const host::Node& node : selected_nodes_at_any_depth())
        most = std::max(most, static_cast<int>(get_preset_knobs(node).size()));
    return most;
}

LooksSlider::LooksSlider() {
    setObjectName(QStringLiteral("SliderPanel"));
    setWindowFlags(Qt::FramelessWindowHint);
    setFixedSize(QSize(400, 40));
    const siblings::Settings settings = siblings::load_settings();
    settings_ = settings.mapping;
    auto_release = settings.isTrue("release_hotkey_closes_slider");
    build_ui();
}

void LooksSlider::build_ui() {
    create_widgets();
    create_layouts();
    siblings::set_style_sheet(this);
    slider->setFocus();
    create_signals();
}

void LooksSlider::create_widgets() {
    input_look = new QLineEdit(QStringLiteral("1"), this);
    input_look->setObjectName(QStringLiteral("input_look"));
    input_look->setInputMask(QStringLiteral("00"));
    input_look->setMaxLength(2);

    slider = new QSlider(Qt::Horizontal, this);
    slider->setFixedHeight(20);
    slider->setMinimum(1);
    slider->setMaximum(get_max_look_version());
}

void LooksSlider::create_layouts() {
    layout_slider = new QHBoxLayout(this);
    layout_slider->addWidget(input_look);
    layout_slider->addWidget(slider);
    setLayout(layout_slider);
}

void LooksSlider::create_signals() {
    // The field only mirrors the slider: typing into it does nothing.
    connect_guarded(slider, &QSlider::valueChanged, this, "LooksSlider.update_widgets",
                    [this] { update_widgets(); });
}

void LooksSlider::update_widgets() {
    const std::string look_index = std::to_string(slider->value());
    input_look->setText(QString::fromStdString(look_index));

    std::vector<host::Node> sel_presets;
    // What this look changes on each node, measured before it replaces the node.
    QStringList changes;
    // The whole step is one undo step, opened at the first node that has the look, so that a step
    // that changes nothing leaves nothing in the host's undo list.
    std::optional<host::UndoGroup> step;
    // One failure ends the walk without a word; the nodes replaced so far stay replaced and are
    // selected again below.
    try {
        const std::string wanted = look_knob_name(look_index);
        for (host::Node& node : selected_nodes_at_any_depth()) {
            std::optional<host::Knob> look;
            for (const auto& [name, knob] : node.knobs())
                if (name == wanted) {
                    look = knob;
                    break;
                }
            if (!look)
                continue;
            changes << look_changes_text(node, look->tooltip());
            if (!step)
                step.emplace(apply_step_name(look_index));
            if (std::optional<host::Node> preset =
                    replace_with_look(node, look->tooltip(), look_index))
                sel_presets.push_back(*preset);
        }
    } catch (...) {
    }

    slider->setToolTip(changes.join(QLatin1Char('\n')));

    // Each apply took the selection away; the new nodes get it back so the next step finds them.
    for (host::Node& preset : sel_presets)
        preset["selected"].setValue(py::bool_(true));
}

int LooksSlider::get_current_preset_index(const host::Node& node) const {
    for (const auto& [name, knob] : node.knobs()) {
        if (name != "looks")
            continue;
        const std::string remembered = knob.tooltip();
        if (remembered.empty())
            return 1;
        // Read as the host's Python reads a whole number, so a broken tooltip fails with its error.
        return static_cast<int>(
            read_look_index(remembered, node.name() + ": the look its looks tab remembers"));
    }
    return 1;
}

void LooksSlider::set_slider_index(int index) {
    slider->setValue(index);
}

void LooksSlider::keyPressEvent(QKeyEvent* event) {
    guarded("LooksSlider.keyPressEvent", [&] {
        if (event->key() == Qt::Key_Escape)
            close();
    });
}

void LooksSlider::keyReleaseEvent(QKeyEvent* event) {
    guarded("LooksSlider.keyReleaseEvent", [&] {
        if (event->key() == kKeyE && auto_release)
            close();
    });
}

void LooksSlider::set_slider_index(const py::int_& index) {
    // Qt keeps the value within the slider's range; a number beyond any int is simply far out.
    int overflow = 0;
    const long long value = PyLong_AsLongLongAndOverflow(index.ptr(), &overflow);
    set_slider_index(overflow > 0   ? std::numeric_limits<int>::max()
                     : overflow < 0 ? std::numeric_limits<int>::min()
                                    : clamped_to_int(value));
}

py::object show_looks_slider() {
    const std::vector<host::Node> sel = selected_nodes_at_any_depth();
    if (sel.empty())
        return py::none();

    int current_slider_position = 1;
    auto make = [&] {
        auto* window = new LooksSlider();
        py::object owner = py::cast(window, py::return_value_policy::take_ownership);
        current_slider_position = window->get_current_preset_index(sel.back());
        // Not passive: a remembered look above 1 is applied again to the selection right here.
        window->set_slider_index(current_slider_position);
        return owner;
    };
    auto place = [&](py::object& owner) {
        auto& window = owner.cast<LooksSlider&>();
        // The arithmetic uses the remembered look, whatever the slider made of it.
        const long long left = (static_cast<long long>(current_slider_position) + 1) * -80;
        window.move(QCursor::pos() + QPoint(clamped_to_int(left), -15));
    };
    return slots::open_window("slider", make, place);
}

} // namespace cobaltrig::looks
