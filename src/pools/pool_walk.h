#pragma once
// The walk through a pool directory and the rules by which the export tree marks its folders.

#include <QString>
#include <QStringList>

#include <functional>

namespace cobaltrig::pools {

/// One visited directory: its path as walked, the names of its subdirectories and of its files,
/// each in the order the file system lists them.
struct WalkStep {
    QString root;
    QStringList dirs;
    QStringList files;
};

/// Walks `top` top-down through its whole depth, in listing order, nothing sorted. `visit` gets
/// each directory before anything below it and returns the names of the subdirectories to descend
/// into; a tree that gave a directory no item has nothing to show below it, so the callers prune
/// those. Symbolic links to directories are listed but not followed, which keeps a link loop from
/// running forever. A directory that can't be listed is skipped, as is a `top` that is no
/// directory.
void walk(const QString& top, const std::function<QStringList(const WalkStep&)>& visit);

/// How the export tree shows one directory.
struct DirState {
    bool disabled = true;
    bool selected = false;
    bool expanded = false;
};

/// The marks of the subdirectory `name` of the directory `root` (normalised) in the export tree,
/// for `mode` "nodes" or "toolsets" and the exported node's class (ignored for toolsets).
DirState exportDirState(const QString& name, const QString& root, const QString& mode,
                        const QString& node_class);

} // namespace cobaltrig::pools
