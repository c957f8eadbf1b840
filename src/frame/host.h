#pragma once
// Typed C++ view of the compositing host's scripting modules `nuke` and `nukescripts`.
//
// Subsystem code talks to the host only through this facade. Every operation is looked up on its
// module at the moment it is called, so a replaced `nuke.Panel` or a monkeypatched function takes
// effect, and a later host version that moves things around needs changes here only.
//
// Handles are thin: a Node or a Knob holds the host's Python object and nothing else. A node that the
// host deletes leaves a dead handle, and any call on it fails with the host's own error.

#include <pybind11/pybind11.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace cobaltrig::host {

namespace py = pybind11;

/// The host module `nuke`, looked up in sys.modules at call time.
py::module_ nuke();
/// The host module `nukescripts`.
py::module_ nukescripts();

class Node;

class Knob {
public:
    explicit Knob(py::object obj) : obj_(std::move(obj)) {}

    std::string name() const;
    std::string label() const;
    void setLabel(const std::string& label);
    std::string tooltip() const;
    void setTooltip(const std::string& text);
    void setVisible(bool visible);
    /// The knob's value as the host gives it (`value()`).
    py::object value() const;
    /// `getValue()`: for enumerations and most numeric knobs the number behind the value.
    py::object getValue() const;
    /// `value()` converted to text with Python's str().
    std::string valueText() const;
    /// `getValue()` converted to text with Python's str(). Text knobs give their text evaluated
    /// (`[value name]` becomes the node's name).
    std::string getValueText() const;
    /// Text knobs: the text as typed, unevaluated (`getText()`): what a copy of the knob must carry.
    std::string getText() const;
    /// `getValue()` as a whole number, cut towards zero as Python's int() does.
    int getValueInt() const;
    /// `getValue()` as a Python whole number of any size, cut towards zero as int() does: for
    /// values such as positions that are only handed back to the host and need no C++ range.
    py::int_ getValueWhole() const;
    void setValue(const py::object& value);
    void setValue(const std::string& value);
    /// The value as the host writes it into a script: animation curves and expressions included.
    std::string toScript() const;
    /// Sets the value from such a text.
    void fromScript(const std::string& text);
    /// `getFlag(flag)`, with a flag of `knobFlag`.
    bool getFlag(const py::object& flag) const;
    /// Script knobs: the command text run when the button is pressed.
    std::string command() const;
    void setCommand(const std::string& command);
    /// Script knobs: runs the command as if the button was pressed.
    void execute();
    std::optional<Node> node() const;
    std::string Class() const;

    const py::object& object() const { return obj_; }

private:
    py::object obj_;
};

class Node {
public:
    explicit Node(py::object obj) : obj_(std::move(obj)) {}

    std::string Class() const;
    std::string name() const;
    void setName(const std::string& name, bool uncollide = true);
    std::string fullName() const;

    /// `knobs().items()` in the host's order: a snapshot, so knobs may be removed while walking it.
    std::vector<std::pair<std::string, Knob>> knobs() const;
    /// The knob of that name, or nothing.
    std::optional<Knob> knob(const std::string& name) const;
    /// `node[name]`: fails with the host's error when the knob is missing.
    Knob operator[](const std::string& name) const;
    void addKnob(const Knob& knob);
    void removeKnob(const Knob& knob);

    void selectOnly();
    void setSelected(bool selected);
    bool isSelected() const;

    int xpos() const;
    int ypos() const;
    void setXYpos(int x, int y);
    void setXYpos(const py::int_& x, const py::int_& y);
    int screenWidth() const;
    int screenHeight() const;

    bool shown() const;
    void showControlPanel();
    void hideControlPanel();

    int inputs() const;
    std::optional<Node> input(int index) const;
    void setInput(int index, const std::optional<Node>& node);
    /// Upstream nodes, without gaps.
    std::vector<Node> dependencies() const;
    /// Downstream nodes.
    std::vector<Node> dependent() const;

    /// Group nodes only: the nodes inside.
    std::vector<Node> nodes() const;

    const py::object& object() const { return obj_; }
    bool is(const Node& other) const { return obj_.is(other.obj_); }

private:
    py::object obj_;
};

/// Enters a group node's context for the life of the object and leaves it on every path out,
/// failures included.
class GroupContext {
public:
    explicit GroupContext(const Node& group);
    ~GroupContext();
    GroupContext(const GroupContext&) = delete;
    GroupContext& operator=(const GroupContext&) = delete;

private:
    Node group_;
};

// --- finding ---
std::vector<Node> selectedNodes();
/// All nodes of the current context, optionally of one class.
std::vector<Node> allNodes(const std::optional<std::string>& filter = std::nullopt);
/// The group whose graph holds `node`: the root for a node at the top level.
Node parentGroup(const Node& node);
std::optional<Node> toNode(const std::string& name);
std::optional<Node> thisNode();
/// `nuke.selectedNode()`: fails with the host's error when nothing is selected.
Node selectedNode();
Node root();
/// The current group context: the root unless a group was entered.
Node thisGroup();
int frame();

// --- making and removing ---
Node createNode(const std::string& node_class, bool inpanel = false);
/// `nuke.createNode(class)` with nothing else passed: the host's own defaults decide the rest.
Node createNodeDefault(const std::string& node_class);
/// `nuke.nodes.<Class>(**knobs)`: an unconnected node, selection untouched.
Node makeNode(const std::string& node_class, const py::dict& knobs = py::dict());
Node makeGroup(bool show = false);
void deleteNode(const Node& node);

// --- copying ---
bool nodeCopy(const std::string& path);
Node nodePaste(const std::string& path);
bool scriptSave(const std::string& path);
std::string cut_paste_file();
void clear_selection_recursive();

// --- rendering ---
void execute(const Node& write, int first, int last);

// --- knobs ---
Knob Tab_Knob(const std::string& name, const std::string& label);
Knob Text_Knob(const std::string& name, const std::string& label);
Knob PyScript_Knob(const std::string& name, const std::string& label);
Knob PythonKnob(const std::string& name);
/// The knob constructors with the name alone: the host gives the label.
Knob Tab_Knob(const std::string& name);
Knob Text_Knob(const std::string& name);
Knob Text_Knob(const std::string& name, const std::string& label, const std::string& text);

// --- viewer ---
/// The node of the active viewer window, or nothing when the host has no viewer.
std::optional<Node> activeViewerNode();
/// The active input of the active viewer, or nothing.
std::optional<int> activeViewerInput();

/// A viewer window of the host (`nuke.activeViewer()`), not its node.
class ViewerWindow {
public:
    explicit ViewerWindow(py::object obj) : obj_(std::move(obj)) {}
    /// The index of the input on show, or nothing; 0 is an input like any other.
    std::optional<int> activeInput() const;
    /// The viewer node, or nothing.
    std::optional<Node> node() const;

private:
    py::object obj_;
};

/// The active viewer window, or nothing when the host has none.
std::optional<ViewerWindow> activeViewer();

// --- dialogs ---
void message(const std::string& text);

// --- undo ---
/// Gathers everything done during its life into one step of the host's undo (`begin` and `end` of
/// a `nuke.Undo` instance: the form every host version accepts; only the newest also takes them on
/// the class). The group is closed on every path out, failures included, so that one undo takes
/// back whatever a failed operation had already done.
class UndoGroup {
public:
    explicit UndoGroup(const std::string& name);
    ~UndoGroup();
    UndoGroup(const UndoGroup&) = delete;
    UndoGroup& operator=(const UndoGroup&) = delete;

private:
    py::object undo_;
};

/// A host panel (`nuke.Panel`), modal while shown.
class Panel {
public:
    explicit Panel(const std::string& title);
    void addEnumerationPulldown(const std::string& name, const std::string& items);
    /// True when the user confirmed the panel.
    bool show();
    /// The chosen value of a field, or nothing.
    std::optional<std::string> value(const std::string& name) const;

private:
    py::object obj_;
};

/// A knob flag of the host by its name (`nuke.INVISIBLE`); looked up once for a walk over many
/// knobs, since every import through the Qt binding's import hook is costly.
py::object knobFlag(const char* name);

/// The host's major version number.
int versionMajor();

} // namespace cobaltrig::host
