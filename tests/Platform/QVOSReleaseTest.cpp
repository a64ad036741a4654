#include <QVKit/Platform/QVOSRelease.h>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(QVOSReleaseTest, ParsesOsReleaseText)
{
    const QVOSRelease debian = QVOSRelease::fromOsRelease(u"PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"
                                                          u"NAME=\"Debian GNU/Linux\"\n"
                                                          u"VERSION_ID=\"12\"\n"
                                                          u"# a comment=ignored\n"
                                                          u"ID=debian\n"_s);
    EXPECT_EQ(debian.name(), u"Debian GNU/Linux"_s);
    EXPECT_EQ(debian.versionId(), u"12"_s);
    EXPECT_EQ(debian.prettyName(), u"Debian GNU/Linux 12 (bookworm)"_s);

    const QVOSRelease quoted =
        QVOSRelease::fromOsRelease(u"NAME='Caf\u00e9 OS'\nVERSION_ID=1.0\r\nPRETTY_NAME=\"A \\\"quoted\\\" name\"\n"_s);
    EXPECT_EQ(quoted.name(), u"Caf\u00e9 OS"_s);
    EXPECT_EQ(quoted.versionId(), u"1.0"_s);
    EXPECT_EQ(quoted.prettyName(), u"A \"quoted\" name"_s);

    const QVOSRelease rolling = QVOSRelease::fromOsRelease(u"NAME=Arch Linux\n"_s);
    EXPECT_TRUE(rolling.versionId().isNull());
    EXPECT_FALSE(rolling.isNull());

    for (const QString &junk : {QString(), u""_s, u"=x\n\n===\nNAME\n\"\n"_s}) {
        const QVOSRelease nothing = QVOSRelease::fromOsRelease(junk);
        EXPECT_TRUE(nothing.isNull());
        EXPECT_TRUE(nothing.name().isNull());
    }
    EXPECT_EQ(QVOSRelease::fromOsRelease(u"NAME=\"\"\n"_s).name(), u""_s);
}

TEST(QVOSReleaseTest, ReadsTheRunningSystem)
{
    // Only that it does not fail: what it says depends on the machine.
    const QVOSRelease current = QVOSRelease::current();
    (void)current.prettyName();
}
