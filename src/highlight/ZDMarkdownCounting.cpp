// The Markdown helpers of the highlighter that need no interpreter: the fast block count through
// md4c and libxml2, and the clean-up applied before counting.
#include "ZDHighlighter.h"

#include <QRegularExpression>

#include <libxml/HTMLparser.h>
#include <md4c-html.h>

#include <cstring>

namespace {
void appendHtml(const MD_CHAR *text, MD_SIZE size, void *userData)
{
    static_cast<QByteArray *>(userData)->append(text, qsizetype(size));
}
} // namespace

qint64 ZDHighlighter::childCountFast(const QString &source)
{
    const QByteArray markdown = source.toUtf8();
    QByteArray html;
    html.reserve(64);
    md_html(markdown.constData(), MD_SIZE(markdown.size()), appendHtml, &html, MD_DIALECT_GITHUB, 0);
    return indexOfLastRootElementInHTML(QString::fromUtf8(html)) + 1;
}

qint64 ZDHighlighter::indexOfLastRootElementInHTML(const QString &html)
{
    const QByteArray bytes = html.toUtf8();
    if (bytes.isEmpty())
        return -1;
    htmlDocPtr document =
        htmlReadMemory(bytes.constData(), int(bytes.size()), nullptr, "UTF-8",
                       HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET);
    if (!document)
        return -1;
    qint64 children = 0;
    xmlNodePtr root = xmlDocGetRootElement(document);
    for (xmlNodePtr node = root ? root->children : nullptr; node; node = node->next) {
        if (node->type != XML_ELEMENT_NODE ||
            std::strcmp(reinterpret_cast<const char *>(node->name), "body") != 0)
            continue;
        // Every child but text nodes counts, as the preview's block list sees them.
        for (xmlNodePtr child = node->children; child; child = child->next) {
            if (std::strcmp(reinterpret_cast<const char *>(child->name), "text") != 0)
                ++children;
        }
        break;
    }
    xmlFreeDoc(document);
    return children - 1;
}

QString ZDHighlighter::preprocessedStringForCountingChildrens(const QString &string)
{
    QString text = string;
    const QString open = QStringLiteral("<!--");
    const QString close = QStringLiteral("-->");
    for (qsizetype start = text.indexOf(open); start >= 0; start = text.indexOf(open)) {
        const qsizetype end = text.indexOf(close, start + open.size());
        text.remove(start, end < 0 ? text.size() - start : end + close.size() - start);
    }
    static const QRegularExpression footnoteDefinition(QStringLiteral("^\\ {0,4}\\[\\^.*\\]:.*$"),
                                                       QRegularExpression::MultilineOption);
    text.replace(footnoteDefinition, QString());
    return text;
}
