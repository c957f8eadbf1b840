#pragma once
// Replacing a file's contents so that a reader sees either the old file or the new one, never a
// half-written one: the bytes go to a temporary file beside the target, which then replaces the
// target in one rename. A failure anywhere leaves the old file as it was and no temporary behind.
//
// This is the same rule as the sibling module's `helper.write_file`, which writes the files that
// Python code changes: temporaries are named ".<name>.<machine>.<process id>.<random>.tmp", a
// symbolic link is followed to the file it leads to (a link that leads nowhere is refused, never
// replaced), and before each write the temporaries of that pattern left beside the target by a
// writer that died (a process of this machine that no longer runs, or anything older than an
// hour) are removed.

#include <QByteArray>
#include <QString>

#include <functional>

namespace cobaltrig::files {

/// The file a write to `path` replaces: `path`, or the file its symbolic links lead to. Fails with
/// std::runtime_error naming `path` when a link leads nowhere or a folder stands in the way.
QString replaceTarget(const QString& path);

/// One replacement of a file, for writers that produce the new contents by path (the host's copy
/// of nodes writes a file by name): make it, let the writer fill `temporaryPath()`, then
/// `commit()`. Destroyed without a commit (a failure, an exception), it removes its temporary.
class FileReplacement {
public:
    /// Resolves the target, sweeps stale temporaries beside it and creates an empty temporary.
    explicit FileReplacement(const QString& path);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    const QString& path() const { return path_; }
    const QString& target() const { return target_; }
    const QString& temporaryPath() const { return temporary_; }

    /// Writes `data` to the temporary (replacing whatever is in it).
    void write(const QByteArray& data);

    /// Flushes the temporary to disk, gives it the target's permissions and renames it over the
    /// target. Fails with std::runtime_error naming the path; the old file then stays.
    void commit();

private:
    [[noreturn]] void fail(const QString& reason) const;

    QString path_;
    QString target_;
    QString temporary_;
    bool committed_ = false;
};

/// Writes `data` to `path` through a FileReplacement. Fails with std::runtime_error naming the
/// path and the reason.
void writeFileAtomically(const QString& path, const QByteArray& data);

/// Removes the stale temporaries beside `target` (see above); gives how many it removed.
int sweepStaleTemporaries(const QString& target);

} // namespace cobaltrig::files
