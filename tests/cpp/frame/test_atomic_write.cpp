// Replacing a file through a temporary file and one rename.

#include "frame/atomic_write.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>

#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

using namespace cobaltrig::files;

namespace {

QByteArray read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void put(const QString& path, const QByteArray& data) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(data);
}

QStringList hidden(const QString& folder) {
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                  QDir::Name);
}

} // namespace

TEST(AtomicWrite, ReplacesALinkedFilesTargetKeepingLinkAndPermissions) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString real = dir.filePath(QStringLiteral("shared.xml"));
    const QString link = dir.filePath(QStringLiteral("settings.xml"));
    put(real, QByteArray(4096, 'x'));
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

TEST(AtomicWrite, AFailedWriteNamesThePathKeepsWhatStoodThereAndLeavesNothingBehind) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    // A directory where the file should be: the write can't replace it.
    const QString blocked = dir.filePath(QStringLiteral("settings.xml"));
    ASSERT_TRUE(QDir().mkpath(blocked + QStringLiteral("/inside")));
    EXPECT_THROW(writeFileAtomically(blocked, "<new/>"), std::runtime_error);
    EXPECT_TRUE(QDir(blocked + QStringLiteral("/inside")).exists());

    try {
        writeFileAtomically(dir.filePath(QStringLiteral("gone/settings.xml")), "<new/>");
        ADD_FAILURE() << "a write into a missing folder succeeded";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("gone/settings.xml"), std::string::npos)
            << error.what();
    }
    EXPECT_TRUE(hidden(dir.path()).isEmpty());
}

TEST(AtomicWrite, AnUncommittedReplacementLeavesTheOldFileAndNoTemporary) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("glow.nk"));
    put(path, "old");
    {
        FileReplacement replacement(path);
        replacement.write("half of the new");
        EXPECT_TRUE(QFile::exists(replacement.temporaryPath()));
    }
    EXPECT_EQ(read(path), QByteArray("old"));
    EXPECT_EQ(hidden(dir.path()), QStringList{QStringLiteral("glow.nk")});
}

TEST(AtomicWrite, TheNextWriteSweepsTemporariesOfDeadWritersOnly) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("settings.xml"));
    put(path, "<old/>");
    // A writer killed between creating its temporary and the rename.
    const pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        auto* abandoned = new FileReplacement(path);
        abandoned->write("<half");
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_EQ(hidden(dir.path()).size(), 2);

    // A live writer's temporary (pid 1 always runs), a fresh and an old one of the earlier writer,
    // and a user's file that only looks similar.
    const QString live = QStringLiteral(".settings.xml.") + QSysInfo::machineHostName() +
                         QStringLiteral(".1.abcDEF.tmp");
    const QString kept[] = {live, QStringLiteral(".settings.xml.fresh123.tmp"),
                            QStringLiteral(".settings.xml.notes.tmp"),
                            QStringLiteral("settings.xml.bak")};
    for (const QString& name : kept)
        put(dir.filePath(name), "x");
    const QString old = dir.filePath(QStringLiteral(".settings.xml.old12345.tmp"));
    put(old, "x");
    {
        QFile file(old);
        ASSERT_TRUE(file.open(QIODevice::Append));
        ASSERT_TRUE(file.setFileTime(QDateTime::currentDateTime().addSecs(-7200),
                                     QFileDevice::FileModificationTime));
    }

    writeFileAtomically(path, "<new/>");

    EXPECT_EQ(read(path), QByteArray("<new/>"));
    QStringList expected{QStringLiteral("settings.xml")};
    for (const QString& name : kept)
        expected << name;
    expected.sort();
    EXPECT_EQ(hidden(dir.path()), expected);
}
