#pragma once
// The rewrite of the settings file, for code that changes several keys at once or holds the tree
// itself (the pool choice, the icon size, the snapshot browser's settings panel).
//
// The file is parsed into an element tree of the host's Python, every `setting` element whose
// `name` is one of the keys gets the new value (all of them, not just the first; a key the file
// does not hold is not added), `helper.prettyprint` lays the tree out the way the sibling module
// lays out every settings file it writes, and the whole document goes back in UTF-8 with an XML
// declaration. The bytes are written through a temporary file and one rename: a full disk, a crash
// or a failing layout leaves the previous settings file in place instead of a truncated one.
//
// The element tree is Python's because `helper.prettyprint` works on one; parsing with Qt and
// handing the text over for the layout would parse the file twice for nothing.

#include <pybind11/pybind11.h>

#include <string>
#include <utility>
#include <vector>

namespace cobaltrig::siblings {

using SettingValues = std::vector<std::pair<std::string, std::string>>;

/// Parses the settings file; the Python ElementTree of it.
pybind11::object parse_settings_file();

/// Sets the keys in a parsed settings tree and writes it back atomically.
void write_settings_file(const pybind11::object& tree, const SettingValues& values);

/// Both steps in one: parse, set, lay out, write.
void rewrite_settings(const SettingValues& values);

} // namespace cobaltrig::siblings
