#include "resolution/rez_slider.h"

#include "frame/guarded.h"
#include "frame/host.h"
#include "frame/siblings.h"
#include "frame/window_slots.h"

#include <QCursor>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPoint>
#include <QSize>
#include <QSlider>

#include <optional>

namespace cobaltrig::resolution {

namespace py = pybind11;

namespace {

// A slider position as the viewer's knob has it in text form: 2 is "2.0".
std::string key_of_position(int position) {
    return std::to_string(position) + ".0";
}

// The other way: "2.0" is position 2.
int position_of_key(const std::string& key) {
    return std::stoi(key);
}

std::optional<std::string> key_of_factor(const std::map<std::string, int>& resolutions,
                                         int factor) {
    for (const auto& [key, value] : resolutions)
        if (value == factor)
            return key;
    return std::nullopt;
}

// Raised by the slot's make step when the viewer gives nothing: the old window is closed by then
// and no new one comes.
struct NoResolution {};

} // namespace

void set_resolution(const std::string& rez) {
    std::optional<host::Node> viewer = host::activeViewerNode();
    if (!viewer)
        throw py::value_error("set_resolution: the host has no active viewer");
    (*viewer)["downrez"].setValue(rez);
}

RezSlider::RezSlider() {
    setObjectName(QStringLiteral("SliderPanel"));
    setWindowFlags(Qt::FramelessWindowHint);
    setFixedSize(QSize(400, 40));
    resolutions = {{"0.0", 1}, {"1.0", 2}, {"2.0", 4}, {"3.0", 8}, {"4.0", 16}, {"5.0", 32}};
    build_ui();
}

void RezSlider::build_ui() {
    create_widgets();
    create_layouts();
    siblings::set_style_sheet(this);
    slider->setFocus();
    // Connected last: setting up the widgets above must not write to the viewer.
    create_signals();
}

void RezSlider::create_widgets() {
    const std::string present = siblings::get_resolution().value_or("");
    const auto step = resolutions.find(present);
    if (step == resolutions.end())
        throw py::key_error("the viewer's downrez value '" + present +
                            "' is none of the steps 0.0 to 5.0");
    input_rez = new QLineEdit(QString::number(step->second), this);
    input_rez->setObjectName(QStringLiteral("input_rez"));
    input_rez->setInputMask(QStringLiteral("00"));
    input_rez->setMaxLength(2);

    slider = new QSlider(Qt::Horizontal, this);
    slider->setFixedHeight(20);
    slider->setMinimum(0);
    slider->setMaximum(5);
    const std::optional<std::string> key = key_of_factor(resolutions, input_rez->text().toInt());
    slider->setSliderPosition(position_of_key(key.value()));
}

void RezSlider::create_layouts() {
    layout_slider = new QHBoxLayout(this);
    layout_slider->addWidget(input_rez);
    layout_slider->addWidget(slider);
    setLayout(layout_slider);
}

void RezSlider::create_signals() {
    // Neither signal is blocked: each side sets the other, and Qt doesn't signal a value that
    // doesn't change, so the round trip ends after one turn.
    connect_guarded(input_rez, &QLineEdit::textChanged, this, "RezSlider.update_widgets",
                    [this] { update_widgets("input_rez"); });
    connect_guarded(slider, &QSlider::valueChanged, this, "RezSlider.update_widgets",
                    [this] { update_widgets("slider"); });
}

void RezSlider::update_widgets(const std::string& sender) {
    if (sender == "input_rez")
        input_changed();
    else if (sender == "slider")
        slider_changed();
}

void RezSlider::input_changed() {
    if (input_rez->text().isEmpty())
        return;
    bool ok = false;
    const int typed = input_rez->text().toInt(&ok);
    if (!ok)
        return;
    // Out-of-range entries are corrected in the field; the correction runs this path once more.
    if (typed == 0)
        input_rez->setText(QStringLiteral("1"));
    else if (typed > 32)
        input_rez->setText(QStringLiteral("32"));

    // A number that is no step (3, 5, 12 ...) stays in the field and changes nothing else.
    const std::optional<std::string> new_rez =
        key_of_factor(resolutions, input_rez->text().toInt());
    if (!new_rez)
        return;
    slider->setValue(position_of_key(*new_rez));
    set_resolution(*new_rez);
}

void RezSlider::slider_changed() {
    const std::string new_rez = key_of_position(slider->value());
    // Setting the text the field already shows would not be signalled, but it would put the cursor
    // behind the masked field's last place and swallow the next digit typed: "1" on the way to
    // "16".
    const QString factor = QString::number(resolutions.at(new_rez));
    if (input_rez->text() != factor)
        input_rez->setText(factor);
    set_resolution(new_rez);
}

void RezSlider::keyPressEvent(QKeyEvent* event) {
    guarded("RezSlider.keyPressEvent", [&] {
        if (event->key() == Qt::Key_Escape)
            close();
    });
}

void RezSlider::keyReleaseEvent(QKeyEvent* event) {
    guarded("RezSlider.keyReleaseEvent", [&] {
        // A held hotkey repeats; only letting go of it closes the window.
        if (event->isAutoRepeat())
            return;
        const std::map<std::string, std::string> hotkeys = siblings::load_hotkeys();
        const auto hotkey = hotkeys.find("resolution_slider");
        if (hotkey == hotkeys.end())
            throw py::key_error("resolution_slider: no hotkey for the resolution slider");
        if (event->text().toUpper().toStdString() == hotkey->second)
            close();
    });
}

py::object showRezSlider() {
    auto make = [] {
        if (!siblings::get_resolution())
            throw NoResolution{};
        return py::cast(new RezSlider(), py::return_value_policy::take_ownership);
    };
    auto place = [](py::object& owner) {
        auto& window = owner.cast<RezSlider&>();
        window.move(QCursor::pos() + QPoint((window.slider->sliderPosition() + 1) * -60, -15));
    };
    try {
        return slots::open_window("rezslider", make, place);
    } catch (const NoResolution&) {
        return py::none();
    }
}

} // namespace cobaltrig::resolution
