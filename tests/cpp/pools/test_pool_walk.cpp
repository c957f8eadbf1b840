// The walk through a pool: order, pruning and linked folders.

#include "pools/pool_walk.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace cobaltrig::pools;

namespace {

void touch(const QString& path) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
}

} // namespace

TEST(Walk, VisitsEachDirectoryBeforeWhatLiesBelowAndOnlyWhereAsked) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QDir root(dir.path());
    ASSERT_TRUE(root.mkpath(QStringLiteral("nodes/Blur/deep")));
    ASSERT_TRUE(root.mkpath(QStringLiteral("toolsets/fx")));
    ASSERT_TRUE(root.mkpath(QStringLiteral(".git/objects")));
    touch(root.filePath(QStringLiteral("nodes/Blur/soft.nk")));
    touch(root.filePath(QStringLiteral(".top.nk")));

    QStringList order;
    QStringList filesOfBlur;
    walk(dir.path(), [&](const WalkStep& step) {
        order << QDir(dir.path()).relativeFilePath(step.root);
        if (step.root.endsWith(QLatin1String("Blur")))
            filesOfBlur = step.files;
        QStringList descend = step.dirs;
        descend.removeAll(QStringLiteral(".git"));
        return descend;
    });

    EXPECT_EQ(order.first(), QStringLiteral("."));
    EXPECT_FALSE(order.contains(QStringLiteral(".git")));
    EXPECT_LT(order.indexOf(QStringLiteral("nodes")), order.indexOf(QStringLiteral("nodes/Blur")));
    EXPECT_LT(order.indexOf(QStringLiteral("nodes/Blur")),
              order.indexOf(QStringLiteral("nodes/Blur/deep")));
    EXPECT_TRUE(order.contains(QStringLiteral("toolsets/fx")));
    EXPECT_EQ(order.size(), 6);
    EXPECT_EQ(filesOfBlur, QStringList{QStringLiteral("soft.nk")});
}

TEST(Walk, ListsLinkedFoldersWithoutFollowingThem) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QDir root(dir.path());
    ASSERT_TRUE(root.mkpath(QStringLiteral("nodes")));
    ASSERT_TRUE(QFile::link(dir.path(), root.filePath(QStringLiteral("nodes/loop"))));

    int visits = 0;
    QStringList dirsOfNodes;
    walk(dir.path(), [&](const WalkStep& step) {
        ++visits;
        if (step.root.endsWith(QLatin1String("nodes")))
            dirsOfNodes = step.dirs;
        return step.dirs;
    });
    EXPECT_EQ(visits, 2);
    EXPECT_EQ(dirsOfNodes, QStringList{QStringLiteral("loop")});
}

TEST(Walk, NoDirectoryNoVisit) {
    int visits = 0;
    walk(QStringLiteral("/nonexistent/pool"), [&](const WalkStep&) {
        ++visits;
        return QStringList();
    });
    walk(QString(), [&](const WalkStep&) {
        ++visits;
        return QStringList();
    });
    EXPECT_EQ(visits, 0);
}
