// Replacing a file through a temporary file and one rename.

#include "pools/atomic_write.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <stdexcept>

using namespace cobaltrig::pools;

namespace {

QByteArray read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString& path, const QByteArray& data) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(data);
}

} // namespace

TEST(AtomicWrite, ReplacesTheContentsAndKeepsThePermissions) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("settings.xml"));
    write(path, QByteArray(4096, 'x'));
    const auto permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup;
    ASSERT_TRUE(QFile::setPermissions(path, permissions));

    writeFileAtomically(path, "<new/>");

    EXPECT_EQ(read(path), QByteArray("<new/>"));
    const auto unix_bits = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                           QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                           QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    EXPECT_EQ(QFile::permissions(path) & unix_bits, permissions);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 1)
        << "no temporary file is left behind";
}

TEST(AtomicWrite, AFailedWriteLeavesNothingHalfWritten) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    // A directory where the file should be: the write can't replace it.
    const QString blocked = dir.filePath(QStringLiteral("settings.xml"));
    ASSERT_TRUE(QDir().mkpath(blocked + QStringLiteral("/inside")));
    EXPECT_THROW(writeFileAtomically(blocked, "<new/>"), std::runtime_error);
    EXPECT_TRUE(QDir(blocked + QStringLiteral("/inside")).exists());

    // A folder that does not exist: no file appears anywhere.
    const QString missing = dir.filePath(QStringLiteral("gone/settings.xml"));
    try {
        writeFileAtomically(missing, "<new/>");
        FAIL() << "writing into a missing folder succeeded";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("gone/settings.xml"), std::string::npos);
    }
    EXPECT_FALSE(QFile::exists(missing));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 0);
}

TEST(AtomicWrite, ALinkedSettingsFileStaysALink) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString real = dir.filePath(QStringLiteral("shared.xml"));
    const QString link = dir.filePath(QStringLiteral("settings.xml"));
    write(real, "<old/>");
    ASSERT_TRUE(QFile::link(real, link));

    writeFileAtomically(link, "<new/>");

    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(read(real), QByteArray("<new/>"));
}
