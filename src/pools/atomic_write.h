#pragma once
// Replacing a file's contents so that a reader sees either the old file or the new one, never a
// half-written one: the bytes go to a temporary file beside the target, which then replaces the
// target in one rename. A failure anywhere leaves the old file as it was.

#include <QByteArray>
#include <QString>

namespace cobaltrig::pools {

/// Writes `data` to `path` through a temporary file and one rename. A symbolic link at `path` is
/// followed, so the link stays and its target gets the new contents. Fails with std::runtime_error
/// naming the path and the reason.
void writeFileAtomically(const QString& path, const QByteArray& data);

} // namespace cobaltrig::pools
