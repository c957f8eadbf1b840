// The walk through a pool and the marks of the export tree's folders.

#include "pools/pool_walk.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace cobaltrig::pools;

namespace {

// Readable test names: the case's texts with everything but letters and digits as '_'.
std::string caseName(std::string text, size_t index) {
    for (char& c : text)
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return std::to_string(index) + "_" + text;
}

} // namespace

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

struct MarkCase {
    const char* name;
    const char* root;
    const char* mode;
    bool disabled;
    bool selected;
    bool expanded;
};

class ExportMarks : public ::testing::TestWithParam<MarkCase> {};

TEST_P(ExportMarks, FollowTheExportedThing) {
    const MarkCase& c = GetParam();
    const DirState state = exportDirState(QString::fromUtf8(c.name), QString::fromUtf8(c.root),
                                          QString::fromUtf8(c.mode), QStringLiteral("Blur"));
    EXPECT_EQ(state.disabled, c.disabled) << c.root << "/" << c.name << " " << c.mode;
    EXPECT_EQ(state.selected, c.selected) << c.root << "/" << c.name << " " << c.mode;
    EXPECT_EQ(state.expanded, c.expanded) << c.root << "/" << c.name << " " << c.mode;
}

INSTANTIATE_TEST_SUITE_P(
    StandardLayout, ExportMarks,
    ::testing::Values(
        // name, root, mode: disabled, selected, expanded
        MarkCase{"nodes", "/p", "nodes", false, false, true},
        MarkCase{"nodes", "/p", "toolsets", false, false, false},
        MarkCase{"Blur", "/p/nodes", "nodes", false, true, true},
        MarkCase{"Blur", "/p/nodes", "toolsets", true, false, false},
        MarkCase{"Grade", "/p/nodes", "nodes", true, false, false},
        MarkCase{"sub", "/p/nodes/Blur", "nodes", true, false, false},
        MarkCase{"toolsets", "/p", "nodes", false, false, false},
        MarkCase{"toolsets", "/p", "toolsets", false, false, true},
        MarkCase{"fx", "/p/toolsets", "nodes", false, false, false},
        MarkCase{"fx", "/p/toolsets", "toolsets", false, false, false},
        MarkCase{"deeper", "/p/toolsets/fx", "toolsets", true, false, false},
        MarkCase{"misc", "/p", "nodes", true, false, false},
        // A folder named like the class is picked anywhere, below toolsets as well.
        MarkCase{"Blur", "/p/toolsets", "nodes", false, true, true},
        MarkCase{"Blur", "/p/toolsets/fx", "nodes", false, true, true}),
    [](const ::testing::TestParamInfo<MarkCase>& info) {
        return caseName(std::string(info.param.root) + "_" + info.param.name + "_" +
                            info.param.mode,
                        info.index);
    });
