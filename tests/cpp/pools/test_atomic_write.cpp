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

} // namespace

TEST(AtomicWrite, ReplacesALinkedFilesTargetKeepingLinkAndPermissions) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString real = dir.filePath(QStringLiteral("shared.xml"));
    const QString link = dir.filePath(QStringLiteral("settings.xml"));
    QFile file(real);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(4096, 'x'));
    file.close();
    const auto permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup;
    ASSERT_TRUE(QFile::setPermissions(real, permissions));
    ASSERT_TRUE(QFile::link(real, link));

    writeFileAtomically(link, "<new/>");

    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(read(real), QByteArray("<new/>"));
    // The owner, group and other bits.
    EXPECT_EQ(QFile::permissions(real) & QFile::Permissions(0x7077), permissions);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 2)
        << "no temporary file is left behind";
}

TEST(AtomicWrite, AFailedWriteNamesThePathAndLeavesNothingBehind) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    // A directory where the file should be: the write can't replace it.
    const QString blocked = dir.filePath(QStringLiteral("settings.xml"));
    ASSERT_TRUE(QDir().mkpath(blocked + QStringLiteral("/inside")));
    EXPECT_THROW(writeFileAtomically(blocked, "<new/>"), std::runtime_error);
    EXPECT_TRUE(QDir(blocked + QStringLiteral("/inside")).exists());

    const QString missing = dir.filePath(QStringLiteral("gone/settings.xml"));
    try {
        writeFileAtomically(missing, "<new/>");
        FAIL() << "writing into a missing folder succeeded";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("gone/settings.xml"), std::string::npos);
    }
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 0);
}
