#include "looks/look_knobs.h"

#include "frame/siblings.h"

#include <algorithm>
#include <array>

namespace cobaltrig::looks {

namespace py = pybind11;

namespace {

// Class names compared as plain, case-sensitive texts. "Preferecnes" is spelled as scripts in the
// wild have it; do not correct it, or those nodes would start getting look tabs.
constexpr std::array<const char*, 2> kRefusedClasses = {"Preferecnes", "Viewer"};

struct Button {
    const char* name;
    const char* icon;
    const char* text;
    const char* command;
};

// The fixed buttons in the order they stand on the tab. The command texts are stored in scripts and
// must stay exactly as they are.
constexpr std::array<Button, 5> kButtons = {{
    {"look_new", "look_star.png", "new", "import cobaltRig.osl as lk;lk.set_look(nuke.thisNode())"},
    {"look_update", "look_update.png", "update", "import cobaltRig.osl as lk;lk.update_preset()"},
    {"look_delete", "look_delete.png", "delete", "import cobaltRig.osl as lk;lk.delete_preset()"},
    {"preset_import", "look_import.png", "import", "import cobaltRig.osl as lk;lk.import_preset()"},
    {"preset_export", "look_export.png", "export",
     "import cobaltRig.osl as lk;lk.export_preset(nuke.thisNode())"},
}};

// The look widgets other than the tab, which delete_look_widgets removes before the tab itself.
constexpr std::array<const char*, 8> kWidgetKnobs = {
    "look_new",      "look_update",  "look_delete",      "preset_import",
    "preset_export", "look_divider", "look_knob_values", "look_uid"};

bool is_widget_knob(const std::string& name) {
    return std::find(kWidgetKnobs.begin(), kWidgetKnobs.end(), name) != kWidgetKnobs.end();
}

void add_look_widgets(host::Node& node) {
    for (const auto& [name, knob] : node.knobs())
        if (name == "looks")
            return;

    std::vector<host::Knob> knobs;
    knobs.push_back(host::Tab_Knob("looks", "looks"));
    host::Knob uid = host::Text_Knob("look_uid", siblings::create_uid());
    uid.setVisible(false);
    knobs.push_back(uid);

    const bool with_icons = siblings::load_settings().isTrue("look_icons");
    for (const Button& button : kButtons) {
        const std::string label =
            with_icons ? std::string("<img src='") + button.icon + "' /> " + button.text
                       : std::string(button.text);
        host::Knob knob = host::PyScript_Knob(button.name, label);
        knob.setCommand(button.command);
        knobs.push_back(knob);
    }
    knobs.push_back(host::Text_Knob("look_divider", ""));
    host::Knob values = host::PythonKnob("look_knob_values");
    values.setVisible(false);
    knobs.push_back(values);

    // Nothing goes on the node until every knob could be made.
    for (const host::Knob& knob : knobs)
        node.addKnob(knob);
}

} // namespace

bool is_look_knob_name(const std::string& name) {
    return name.find(kLookKnobMarker) != std::string::npos;
}

std::string look_knob_name(const std::string& index) {
    return kLookKnobMarker + index;
}

namespace {

// A Python literal between single quotes. Uids as the add-on makes them are hex digits and come out
// unchanged, so the command text of an ordinary look stays exactly as scripts store it.
std::string single_quoted(const std::string& text) {
    static const char* const kHex = "0123456789abcdef";
    std::string out = "'";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\\' || c == '\'') {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (byte < 0x20 || byte == 0x7f) {
            out += "\\x";
            out += kHex[byte >> 4];
            out += kHex[byte & 0xf];
        } else {
            out += c; // UTF-8 bytes stand as they are: the command is UTF-8 text
        }
    }
    return out + "'";
}

} // namespace

std::string look_knob_command(const std::string& preset_uid, const std::string& index) {
    return "import cobaltRig.osl as lk;lk.apply_preset(nuke.thisNode(), " +
           single_quoted(preset_uid) + ", " + single_quoted(index) + ")";
}

long long read_look_index(const std::string& text, const std::string& where) {
    const py::int_ value{py::str(text)};
    int overflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
    if (overflow != 0 || number > kMaxLookIndex || number < -kMaxLookIndex)
        throw py::value_error(where + ": the look number " + text +
                              " is out of range; look numbers go up to " +
                              std::to_string(kMaxLookIndex));
    return number;
}

void create_looks_widgets(host::Node& node) {
    const std::string node_class = node.Class();
    for (const char* refused : kRefusedClasses)
        if (node_class == refused)
            return;
    // Giving a node its buttons is a convenience on the way to storing a look: a host that refuses
    // a knob must not stop the store, so nothing here reaches the user.
    try {
        add_look_widgets(node);
    } catch (pybind11::error_already_set&) {
    } catch (...) {
    }
}

std::vector<host::Knob> get_preset_knobs(const host::Node& node) {
    std::vector<host::Knob> result;
    for (const auto& [name, knob] : node.knobs())
        if (is_look_knob_name(name))
            result.push_back(knob);
    return result;
}

void remove_preset_knobs(host::Node& node) {
    for (const auto& [name, knob] : node.knobs())
        if (is_look_knob_name(name))
            node.removeKnob(knob);
}

void delete_look_widgets(host::Node& /*node*/) {
    // Works on the whole selection, as the host-side entry always meant it to.
    for (host::Node& selected : host::selectedNodes()) {
        for (const auto& [name, knob] : selected.knobs())
            if (is_widget_knob(name) || is_look_knob_name(name))
                selected.removeKnob(knob);
        // The tab goes last, after the knobs under it.
        for (const auto& [name, knob] : selected.knobs())
            if (name == "looks")
                selected.removeKnob(knob);
    }
}

void delete_selected_nodes_looks() {
    host::UndoGroup step("Remove looks");
    for (host::Node& node : host::selectedNodes())
        delete_look_widgets(node);
}

} // namespace cobaltrig::looks
