// Path texts and listing rules of pool trees.

#include "pools/pool_paths.h"

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

struct ExtensionCase {
    const char* file;
    const char* extension;
    bool preset;
    const char* label;
};

class Extension : public ::testing::TestWithParam<ExtensionCase> {};

TEST_P(Extension, SplitsLikeTheHostsPython) {
    const ExtensionCase& c = GetParam();
    EXPECT_EQ(extension(QString::fromUtf8(c.file)), QString::fromUtf8(c.extension));
    EXPECT_EQ(isPresetFile(QString::fromUtf8(c.file)), c.preset);
    EXPECT_EQ(presetLabel(QString::fromUtf8(c.file)), QString::fromUtf8(c.label));
}

INSTANTIATE_TEST_SUITE_P(
    Files, Extension,
    ::testing::Values(ExtensionCase{"blur.nk", ".nk", true, "blur"},
                      ExtensionCase{"x.NK", ".NK", false, "x.NK"},
                      ExtensionCase{"a.nk.nk", ".nk", true, "a"},
                      ExtensionCase{"b.nkx.nk", ".nk", true, "bx"},
                      ExtensionCase{".nk", "", false, ""}, ExtensionCase{"..nk", "", false, "."},
                      ExtensionCase{".hidden.nk", ".nk", true, ".hidden"},
                      ExtensionCase{"notes.txt", ".txt", false, "notes.txt"},
                      ExtensionCase{"plain", "", false, "plain"},
                      ExtensionCase{"/p/nodes/Blur/soft.nk", ".nk", true, "/p/nodes/Blur/soft"}),
    [](const ::testing::TestParamInfo<ExtensionCase>& info) {
        return caseName(std::string(info.param.file), info.index);
    });

TEST(Paths, JoinRestartsAtAnAbsolutePieceAndNeverDoublesSeparators) {
    EXPECT_EQ(join(QStringLiteral("/pool"), QStringLiteral("nodes")),
              QStringLiteral("/pool/nodes"));
    EXPECT_EQ(join(QStringLiteral("/pool/"), QStringLiteral("nodes")),
              QStringLiteral("/pool/nodes"));
    EXPECT_EQ(join({QStringLiteral("/pool"), QStringLiteral("nodes"),
                    QStringLiteral("/pool/toolsets/fx"), QStringLiteral("a.nk")}),
              QStringLiteral("/pool/toolsets/fx/a.nk"));
    EXPECT_EQ(join(QString(), QStringLiteral("nodes")), QStringLiteral("nodes"));
}

TEST(Paths, StemAndFolderOfAPreset) {
    EXPECT_EQ(stem(QStringLiteral("/p/nodes/Blur/a.b.nk")), QStringLiteral("a.b"));
    EXPECT_EQ(dirName(QStringLiteral("/p/nodes/Blur/a.nk")), QStringLiteral("/p/nodes/Blur"));
    EXPECT_EQ(baseName(QStringLiteral("/p/nodes/Blur")), QStringLiteral("Blur"));
    EXPECT_EQ(lastPiece(QStringLiteral("/p/toolsets")), QStringLiteral("toolsets"));
    EXPECT_EQ(lastPiece(QStringLiteral("/p/")), QString());
}

TEST(Paths, TargetFolderOfAFileItemIsItsFoldersName) {
    EXPECT_EQ(targetFolder(QStringLiteral("/p/nodes/Blur"), true), QStringLiteral("/p/nodes/Blur"));
    EXPECT_EQ(targetFolder(QStringLiteral("/p/nodes/Blur/soft.nk"), false), QStringLiteral("Blur"));
    EXPECT_EQ(targetFolder(QStringLiteral("soft.nk"), false), QString());
}

TEST(Paths, MakeDirectoriesMakesParentsAndSaysWhyItFails) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString deep = dir.filePath(QStringLiteral("nodes/Blur/sub"));
    EXPECT_TRUE(makeDirectories(deep).isEmpty());
    EXPECT_TRUE(QDir(deep).exists());
    EXPECT_TRUE(makeDirectories(deep).isEmpty()) << "an existing folder is no failure";

    QFile blocker(dir.filePath(QStringLiteral("file")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    const QString error = makeDirectories(dir.filePath(QStringLiteral("file/below")));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_TRUE(error.contains(QStringLiteral("file/below")));
}
