#include "ZDModelTestSupport.h"
#include "ZDSnippet.h"
#include "ZDSnippetPasteboard.h"

#include <QDir>
#include <QFile>
#include <QMimeData>
#include <QTemporaryDir>

using PasteboardTest = ModelTest;

TEST_F(PasteboardTest, CopiedSnippetsKeepTheirIdentity)
{
    auto one = ZDSnippet::create(QStringLiteral("one"));
    one->parts().first()->setContent(QStringLiteral("body"));
    auto two = ZDSnippet::create(QStringLiteral("two"));

    QMimeData single;
    ZDSnippetPasteboard::writeSnippets(&single, {one});
    EXPECT_TRUE(single.hasFormat("com.varnok.Zandrio.UTI.Snippet"));
    EXPECT_FALSE(single.hasUrls());
    const ZDSnippetList read = ZDSnippetPasteboard::readSnippets(&single);
    ASSERT_EQ(read.size(), 1);
    EXPECT_EQ(read.first()->UUID(), one->UUID());
    EXPECT_TRUE(read.first()->isIdentical(one.get()));

    QMimeData both;
    ZDSnippetPasteboard::writeSnippets(&both, {one, two});
    const ZDSnippetList pair = ZDSnippetPasteboard::readSnippets(&both);
    ASSERT_EQ(pair.size(), 2);
    EXPECT_EQ(pair[1]->UUID(), two->UUID());

    QMimeData other;
    other.setText(QStringLiteral("plain"));
    EXPECT_FALSE(ZDSnippetPasteboard::canReadSnippets(&other));
    other.setData("com.varnok.Zandrio.UTI.Snippet", "garbage");
    EXPECT_TRUE(ZDSnippetPasteboard::readSnippets(&other).isEmpty());
}

TEST_F(PasteboardTest, DraggingOutWritesEveryPartAsAFile)
{
    auto snippet = ZDSnippet::create(QStringLiteral("tool"));
    auto first = snippet->parts().first();
    first->setTitle(QStringLiteral("main.py"));
    first->setContent(QStringLiteral("print('é')\n"));
    auto second = ZDSnippetPart::create(QStringLiteral("README.md"), snippet->UUID());
    second->setContent(QStringLiteral("# Tool"));
    auto escaping = ZDSnippetPart::create(QStringLiteral("../outside.txt"), snippet->UUID());
    snippet->setParts({first, second, escaping});

    QTemporaryDir folder;
    QFile stale(folder.filePath(QStringLiteral("README.md")));
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    stale.write("old contents that are longer");
    stale.close();

    QMimeData mime;
    ZDSnippetPasteboard::writeSnippets(&mime, {snippet}, folder.path());
    const QList<QUrl> urls = mime.urls();
    ASSERT_EQ(urls.size(), 2);
    EXPECT_EQ(urls[0], QUrl::fromLocalFile(folder.filePath(QStringLiteral("main.py"))));
    QFile written(urls[1].toLocalFile());
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), "# Tool");
    QFile python(urls[0].toLocalFile());
    ASSERT_TRUE(python.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(python.readAll()), "print('é')\n");
    EXPECT_FALSE(QFile::exists(QDir(folder.path()).absoluteFilePath(QStringLiteral("../outside.txt"))));
    EXPECT_EQ(ZDSnippetPasteboard::readSnippets(&mime).first()->partsCount(), 3);

    const QString dragFolder = ZDSnippetPasteboard::makeDragFolder();
    EXPECT_TRUE(QDir(dragFolder).exists());
    QDir(dragFolder).removeRecursively();
}
