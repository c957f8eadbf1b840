#include "frame/host.h"

#include <pybind11/stl.h>

namespace cobaltrig::host {

namespace {

std::vector<Node> toNodes(const py::handle& list) {
    std::vector<Node> nodes;
    for (auto item : list) {
        if (!item.is_none())
            nodes.emplace_back(py::reinterpret_borrow<py::object>(item));
    }
    return nodes;
}

std::optional<Node> toOptionalNode(const py::object& obj) {
    if (obj.is_none())
        return std::nullopt;
    return Node(obj);
}

} // namespace

py::module_ nuke() { return py::module_::import("nuke"); }
py::module_ nukescripts() { return py::module_::import("nukescripts"); }

// --- Knob ---

std::string Knob::name() const { return obj_.attr("name")().cast<std::string>(); }
std::string Knob::label() const { return obj_.attr("label")().cast<std::string>(); }
void Knob::setLabel(const std::string& label) { obj_.attr("setLabel")(label); }
std::string Knob::tooltip() const { return obj_.attr("tooltip")().cast<std::string>(); }
void Knob::setTooltip(const std::string& text) { obj_.attr("setTooltip")(text); }
void Knob::setVisible(bool visible) { obj_.attr("setVisible")(visible); }
py::object Knob::value() const { return obj_.attr("value")(); }
py::object Knob::getValue() const { return obj_.attr("getValue")(); }
std::string Knob::valueText() const { return py::str(value()).cast<std::string>(); }
std::string Knob::getValueText() const { return py::str(getValue()).cast<std::string>(); }
std::string Knob::getText() const { return obj_.attr("getText")().cast<std::string>(); }
int Knob::getValueInt() const { return py::int_(getValue()).cast<int>(); }
py::int_ Knob::getValueWhole() const { return py::int_(getValue()); }
void Knob::setValue(const py::object& value) { obj_.attr("setValue")(value); }
void Knob::setValue(const std::string& value) { obj_.attr("setValue")(value); }
std::string Knob::toScript() const { return obj_.attr("toScript")().cast<std::string>(); }
void Knob::fromScript(const std::string& text) { obj_.attr("fromScript")(text); }
bool Knob::getFlag(const py::object& flag) const { return py::bool_(obj_.attr("getFlag")(flag)); }
std::string Knob::command() const { return obj_.attr("command")().cast<std::string>(); }
void Knob::setCommand(const std::string& command) { obj_.attr("setCommand")(command); }
void Knob::execute() { obj_.attr("execute")(); }
std::optional<Node> Knob::node() const { return toOptionalNode(obj_.attr("node")()); }
std::string Knob::Class() const { return obj_.attr("Class")().cast<std::string>(); }

// --- Node ---

std::string Node::Class() const { return obj_.attr("Class")().cast<std::string>(); }
std::string Node::name() const { return obj_.attr("name")().cast<std::string>(); }
void Node::setName(const std::string& name, bool uncollide) {
    obj_.attr("setName")(name, py::arg("uncollide") = uncollide);
}
std::string Node::fullName() const { return obj_.attr("fullName")().cast<std::string>(); }

std::vector<std::pair<std::string, Knob>> Node::knobs() const {
    std::vector<std::pair<std::string, Knob>> result;
    py::object items = obj_.attr("knobs")().attr("items")();
    for (auto item : items) {
        auto pair = py::reinterpret_borrow<py::tuple>(item);
        result.emplace_back(pair[0].cast<std::string>(),
                            Knob(py::reinterpret_borrow<py::object>(pair[1])));
    }
    return result;
}

std::optional<Knob> Node::knob(const std::string& name) const {
    py::object k = obj_.attr("knob")(name);
    if (k.is_none())
        return std::nullopt;
    return Knob(k);
}

Knob Node::operator[](const std::string& name) const {
    return Knob(obj_.attr("__getitem__")(name));
}

void Node::addKnob(const Knob& knob) { obj_.attr("addKnob")(knob.object()); }
void Node::removeKnob(const Knob& knob) { obj_.attr("removeKnob")(knob.object()); }
void Node::selectOnly() { obj_.attr("selectOnly")(); }
void Node::setSelected(bool selected) { obj_.attr("setSelected")(selected); }
bool Node::isSelected() const { return obj_.attr("isSelected")().cast<bool>(); }
int Node::xpos() const { return obj_.attr("xpos")().cast<int>(); }
int Node::ypos() const { return obj_.attr("ypos")().cast<int>(); }
void Node::setXYpos(int x, int y) { obj_.attr("setXYpos")(x, y); }
void Node::setXYpos(const py::int_& x, const py::int_& y) { obj_.attr("setXYpos")(x, y); }
int Node::screenWidth() const { return obj_.attr("screenWidth")().cast<int>(); }
int Node::screenHeight() const { return obj_.attr("screenHeight")().cast<int>(); }
bool Node::shown() const { return obj_.attr("shown")().cast<bool>(); }
void Node::showControlPanel() { obj_.attr("showControlPanel")(); }
void Node::hideControlPanel() { obj_.attr("hideControlPanel")(); }
int Node::inputs() const { return obj_.attr("inputs")().cast<int>(); }

std::optional<Node> Node::input(int index) const {
    return toOptionalNode(obj_.attr("input")(index));
}

void Node::setInput(int index, const std::optional<Node>& node) {
    obj_.attr("setInput")(index, node ? node->object() : py::none());
}

std::vector<Node> Node::dependencies() const { return toNodes(obj_.attr("dependencies")()); }
std::vector<Node> Node::dependent() const { return toNodes(obj_.attr("dependent")()); }
std::vector<Node> Node::nodes() const { return toNodes(obj_.attr("nodes")()); }

// --- GroupContext ---

GroupContext::GroupContext(const Node& group) : group_(group) {
    group_.object().attr("begin")();
}

GroupContext::~GroupContext() {
    // A destructor may run while a Python error is being propagated; keep that error intact and
    // never let the leaving of the context throw.
    py::error_scope keep_error;
    try {
        group_.object().attr("end")();
    } catch (py::error_already_set& e) {
        e.discard_as_unraisable("leaving a group context");
    } catch (...) {
    }
}

// --- free functions ---

std::vector<Node> selectedNodes() { return toNodes(nuke().attr("selectedNodes")()); }

std::vector<Node> allNodes(const std::optional<std::string>& filter) {
    if (filter)
        return toNodes(nuke().attr("allNodes")(*filter));
    return toNodes(nuke().attr("allNodes")());
}

Node parentGroup(const Node& node) {
    // The host names a node inside groups by its path from the root ("Group1.Inner.Blur1").
    const std::string path = node.fullName();
    const auto dot = path.rfind('.');
    if (dot == std::string::npos)
        return root();
    py::object group = nuke().attr("toNode")("root." + path.substr(0, dot));
    if (group.is_none())
        throw py::value_error(path + ": the group that holds this node cannot be found");
    return Node(group);
}

std::optional<Node> toNode(const std::string& name) {
    return toOptionalNode(nuke().attr("toNode")(name));
}

std::optional<Node> thisNode() { return toOptionalNode(nuke().attr("thisNode")()); }
Node selectedNode() { return Node(nuke().attr("selectedNode")()); }
Node root() { return Node(nuke().attr("root")()); }
Node thisGroup() { return Node(nuke().attr("thisGroup")()); }
int frame() { return nuke().attr("frame")().cast<int>(); }

Node createNode(const std::string& node_class, bool inpanel) {
    return Node(nuke().attr("createNode")(node_class, py::arg("inpanel") = inpanel));
}

Node createNodeDefault(const std::string& node_class) {
    return Node(nuke().attr("createNode")(node_class));
}

Node makeNode(const std::string& node_class, const py::dict& knobs) {
    return Node(nuke().attr("nodes").attr(node_class.c_str())(**knobs));
}

Node makeGroup(bool show) { return Node(nuke().attr("makeGroup")(py::arg("show") = show)); }
void deleteNode(const Node& node) { nuke().attr("delete")(node.object()); }

bool nodeCopy(const std::string& path) { return py::bool_(nuke().attr("nodeCopy")(path)); }
Node nodePaste(const std::string& path) { return Node(nuke().attr("nodePaste")(path)); }
bool scriptSave(const std::string& path) { return py::bool_(nuke().attr("scriptSave")(path)); }
std::string cut_paste_file() {
    return nukescripts().attr("cut_paste_file")().cast<std::string>();
}
void clear_selection_recursive() { nukescripts().attr("clear_selection_recursive")(); }

void execute(const Node& write, int first, int last) {
    nuke().attr("execute")(write.object(), first, last);
}

Knob Tab_Knob(const std::string& name, const std::string& label) {
    return Knob(nuke().attr("Tab_Knob")(name, label));
}
Knob Text_Knob(const std::string& name, const std::string& label) {
    return Knob(nuke().attr("Text_Knob")(name, label));
}
Knob PyScript_Knob(const std::string& name, const std::string& label) {
    return Knob(nuke().attr("PyScript_Knob")(name, label));
}
Knob PythonKnob(const std::string& name) { return Knob(nuke().attr("PythonKnob")(name)); }
Knob Tab_Knob(const std::string& name) { return Knob(nuke().attr("Tab_Knob")(name)); }
Knob Text_Knob(const std::string& name) { return Knob(nuke().attr("Text_Knob")(name)); }
Knob Text_Knob(const std::string& name, const std::string& label, const std::string& text) {
    return Knob(nuke().attr("Text_Knob")(name, label, text));
}

std::optional<Node> activeViewerNode() {
    py::object viewer = nuke().attr("activeViewer")();
    if (viewer.is_none())
        return std::nullopt;
    return toOptionalNode(viewer.attr("node")());
}

std::optional<int> activeViewerInput() {
    py::object viewer = nuke().attr("activeViewer")();
    if (viewer.is_none())
        return std::nullopt;
    py::object input = viewer.attr("activeInput")();
    if (input.is_none())
        return std::nullopt;
    return input.cast<int>();
}

std::optional<int> ViewerWindow::activeInput() const {
    py::object input = obj_.attr("activeInput")();
    if (input.is_none())
        return std::nullopt;
    return input.cast<int>();
}

std::optional<Node> ViewerWindow::node() const { return toOptionalNode(obj_.attr("node")()); }

std::optional<ViewerWindow> activeViewer() {
    py::object viewer = nuke().attr("activeViewer")();
    if (viewer.is_none())
        return std::nullopt;
    return ViewerWindow(viewer);
}

void message(const std::string& text) { nuke().attr("message")(text); }

UndoGroup::UndoGroup(const std::string& name) : undo_(nuke().attr("Undo")()) {
    undo_.attr("begin")(name);
}

UndoGroup::~UndoGroup() {
    // As GroupContext: keep a failure that is on its way out intact, and never throw from here.
    py::error_scope keep_error;
    try {
        undo_.attr("end")();
    } catch (py::error_already_set& e) {
        e.discard_as_unraisable("closing an undo group");
    } catch (...) {
    }
}

Panel::Panel(const std::string& title) : obj_(nuke().attr("Panel")(title)) {}

void Panel::addEnumerationPulldown(const std::string& name, const std::string& items) {
    obj_.attr("addEnumerationPulldown")(name, items);
}

bool Panel::show() {
    py::object result = obj_.attr("show")();
    return !result.is_none() && result.cast<int>() == 1;
}

std::optional<std::string> Panel::value(const std::string& name) const {
    py::object v = obj_.attr("value")(name);
    if (v.is_none())
        return std::nullopt;
    return py::str(v).cast<std::string>();
}

int versionMajor() { return nuke().attr("NUKE_VERSION_MAJOR").cast<int>(); }

py::object knobFlag(const char* name) { return nuke().attr(name); }

} // namespace cobaltrig::host
