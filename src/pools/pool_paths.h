#pragma once
// Path and listing rules of a pool directory tree, shared by the export and import windows.
//
// Paths here are texts, composed the way the host's Python composes them (its path join, its
// extension split), because preset paths are compared as plain strings and end up in the settings
// store and in tree items that Python code reads back. A pool tree shows directories with forward
// slashes whatever the platform.

#include <QString>
#include <QStringList>

namespace cobaltrig::pools {

/// The platform's path separator as a character ('/' or '\\').
QChar separator();

/// Joins path pieces like the platform's path join: an absolute piece restarts the path, and no
/// separator is doubled where the left side already ends with one.
QString join(const QString& left, const QString& right);
QString join(std::initializer_list<QString> pieces);

/// Every platform separator replaced by '/'.
QString normalise(const QString& path);

/// The text after the last separator ('/' or the platform's).
QString baseName(const QString& path);
/// The text before the last separator, without it ("" when there is none).
QString dirName(const QString& path);

/// The extension of a file name as the host's Python splits it: from the last dot on, leading
/// dots of the name not counting, so ".nk" has none and "a.nk.nk" has ".nk".
QString extension(const QString& file_name);
/// The file name without that extension.
QString stem(const QString& file_name);

/// Only files whose extension is exactly ".nk" (case-sensitive) are presets.
bool isPresetFile(const QString& file_name);
/// Directories whose names begin with a dot are never shown, nor anything below them.
bool isHiddenDir(const QString& dir_name);
/// The label of a preset: the file name with every ".nk" taken out, not only the ending.
QString presetLabel(const QString& file_name);

/// The last '/'-piece of a path.
QString lastPiece(const QString& path);

/// The folder a preset goes to, from the path of the tree's current item: a directory item is its
/// own target, a file item gives the folder that holds it. `is_dir` says whether the path is an
/// existing directory. Empty when a file path names no folder.
QString targetFolder(const QString& item_path, bool is_dir);

/// Why `name` can't name a preset file in its folder, or empty when it can. A name that would
/// leave the folder (a separator, "..", an absolute path) or hide the file (a leading dot, which
/// the tree never lists) is refused.
QString presetNameProblem(const QString& name);

/// Makes the directory with all missing parents. Empty on success, else the reason it failed.
QString makeDirectories(const QString& path);

} // namespace cobaltrig::pools
