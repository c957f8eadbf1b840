#include "pools/pool_walk.h"

#include "pools/pool_paths.h"

#include <QDirIterator>
#include <QFileInfo>

namespace cobaltrig::pools {

namespace {

// Recursion depth is the depth of the pool, which a user builds by hand.
void walkDirectory(const QString& root, const std::function<QStringList(const WalkStep&)>& visit) {
    WalkStep step;
    step.root = root;
    QStringList links;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    while (it.hasNext()) {
        it.next();
        const QFileInfo info = it.fileInfo();
        if (info.isDir()) {
            step.dirs << info.fileName();
            if (info.isSymLink())
                links << info.fileName();
        } else {
            step.files << info.fileName();
        }
    }
    const QStringList descend = visit(step);
    for (const QString& name : descend)
        if (!links.contains(name))
            walkDirectory(join(root, name), visit);
}

} // namespace

void walk(const QString& top, const std::function<QStringList(const WalkStep&)>& visit) {
    if (!QFileInfo(top).isDir())
        return;
    walkDirectory(top, visit);
}

DirState exportDirState(const QString& name, const QString& root, const QString& mode,
                        const QString& node_class) {
    DirState state;
    const bool reserved = name == QLatin1String("nodes") || name == QLatin1String("toolsets");
    if (reserved)
        state.disabled = false;
    if (mode == QLatin1String("nodes")) {
        if (name == QLatin1String("nodes")) {
            state.expanded = true;
            state.disabled = false;
        }
        // The class test looks at the name alone, so a folder of that name anywhere in the pool
        // is offered, a category below toolsets included.
        if (name == node_class) {
            state.disabled = false;
            state.selected = true;
            state.expanded = true;
        }
    }
    if (mode == QLatin1String("toolsets") && name == QLatin1String("toolsets"))
        state.expanded = true;
    if (lastPiece(root) == QLatin1String("toolsets"))
        state.disabled = false;
    return state;
}

} // namespace cobaltrig::pools
