#include "frame/settings_file.h"

#include "frame/atomic_write.h"
#include "frame/siblings.h"

#include <QByteArray>
#include <QString>

namespace cobaltrig::siblings {

namespace py = pybind11;

namespace {

py::module_ elementTree() {
    return py::module_::import("xml.etree.ElementTree");
}

} // namespace

py::object parse_settings_file() {
    // Through the sibling module's reader: its errors name the file, and a settings folder that
    // could not be written reads as the defaults instead of failing.
    return elementTree().attr("ElementTree")(siblings::load_settings_tree());
}

void write_settings_file(const py::object& tree, const SettingValues& values) {
    py::object root = tree.attr("getroot")();
    // A file without a `settings` element holds none of the keys; it is written back unchanged.
    py::object settings = root.attr("find")("settings");
    if (!settings.is_none()) {
        for (py::handle element : settings.attr("findall")("setting")) {
            py::object name = element.attr("get")("name");
            if (name.is_none())
                continue;
            const std::string key = py::str(name).cast<std::string>();
            for (const auto& [wanted, value] : values)
                if (key == wanted)
                    element.attr("text") = value;
        }
    }
    siblings::prettyprint(root);
    // Written through ElementTree.write, whose declaration switch every Python 3 has, like the
    // sibling module's writer; tostring only takes it from Python 3.8 on.
    py::object buffer = py::module_::import("io").attr("BytesIO")();
    elementTree().attr("ElementTree")(root).attr("write")(buffer, py::arg("encoding") = "utf-8",
                                                          py::arg("xml_declaration") = true);
    py::bytes data = buffer.attr("getvalue")();
    // Ending in a line break like the files the sibling module writes, so the two writers'
    // files look alike.
    const std::string bytes = std::string(data) + "\n";
    files::writeFileAtomically(QString::fromStdString(get_settings_xml()),
                               QByteArray(bytes.data(), static_cast<int>(bytes.size())));
}

void rewrite_settings(const SettingValues& values) {
    write_settings_file(parse_settings_file(), values);
}

} // namespace cobaltrig::siblings
