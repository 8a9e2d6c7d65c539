#include "ZDFoldingTokenizer.h"

#include "ZDSearchFolding.h"

#include "ZDFts5Api.h"

#include <cstring>

namespace {

struct Observer
{
    ZDFoldingTokenizer::TermObserver observer = nullptr;
    void *context = nullptr;
};

struct Tokenizer
{
    Observer observer;
};

int createTokenizer(void *userData, const char **, int, Fts5Tokenizer **out)
{
    auto *tokenizer = new Tokenizer;
    if (userData)
        tokenizer->observer = *static_cast<Observer *>(userData);
    *out = reinterpret_cast<Fts5Tokenizer *>(tokenizer);
    return SQLITE_OK;
}

void deleteObserver(void *userData)
{
    delete static_cast<Observer *>(userData);
}

void deleteTokenizer(Fts5Tokenizer *tokenizer)
{
    delete reinterpret_cast<Tokenizer *>(tokenizer);
}

using TokenCallback = int (*)(void *, int, const char *, int, int, int);

bool isAsciiWordByte(unsigned char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Most library text is ASCII, where folding is lower-casing and letters and digits are
// [A-Za-z0-9]; such a text is tokenized straight from its bytes.
int tokenizeAscii(void *context, const char *text, int length, TokenCallback emit)
{
    char buffer[256];
    QByteArray large;
    int i = 0;
    while (i < length) {
        while (i < length && !isAsciiWordByte(static_cast<unsigned char>(text[i])))
            ++i;
        const int start = i;
        while (i < length && isAsciiWordByte(static_cast<unsigned char>(text[i])))
            ++i;
        if (i == start)
            break;
        const int size = i - start;
        char *term = buffer;
        if (size > int(sizeof buffer)) {
            large.resize(size);
            term = large.data();
        }
        for (int k = 0; k < size; ++k) {
            const char c = text[start + k];
            term[k] = (c >= 'A' && c <= 'Z') ? char(c + ('a' - 'A')) : c;
        }
        if (const int rc = emit(context, 0, term, size, start, i); rc != SQLITE_OK)
            return rc;
    }
    return SQLITE_OK;
}

bool isWordCodePoint(char32_t c)
{
    return QChar::isLetterOrNumber(c);
}

template <typename Emit> int forEachTerm(const QString &folded, Emit emit)
{
    const qsizetype n = folded.size();
    qsizetype i = 0;
    while (i < n) {
        auto codePointAt = [&](qsizetype at, int *width) -> char32_t {
            const QChar c = folded.at(at);
            if (c.isHighSurrogate() && at + 1 < n && folded.at(at + 1).isLowSurrogate()) {
                *width = 2;
                return QChar::surrogateToUcs4(c, folded.at(at + 1));
            }
            *width = 1;
            return c.unicode();
        };
        int width = 1;
        while (i < n && !isWordCodePoint(codePointAt(i, &width)))
            i += width;
        const qsizetype start = i;
        while (i < n && isWordCodePoint(codePointAt(i, &width)))
            i += width;
        if (i == start)
            break;
        if (const int rc = emit(QStringView(folded).mid(start, i - start), start, i); rc != SQLITE_OK)
            return rc;
    }
    return SQLITE_OK;
}

struct ObservingContext
{
    void *context;
    TokenCallback emit;
    Observer observer;
};

int observeAndEmit(void *context, int flags, const char *term, int length, int start, int end)
{
    auto *observing = static_cast<ObservingContext *>(context);
    observing->observer.observer(observing->observer.context, term, length);
    return observing->emit(observing->context, flags, term, length, start, end);
}

int tokenizeText(void *context, const char *text, int length, TokenCallback emit);

int tokenize(Fts5Tokenizer *tokenizer, void *context, int flags, const char *text, int length,
             TokenCallback emit)
{
    if (length <= 0)
        return SQLITE_OK;
    const Observer &observer = reinterpret_cast<Tokenizer *>(tokenizer)->observer;
    const bool document = (flags & FTS5_TOKENIZE_DOCUMENT) != 0;
    if (document && observer.observer) {
        ObservingContext observing{context, emit, observer};
        return tokenizeText(&observing, text, length, observeAndEmit);
    }
    return tokenizeText(context, text, length, emit);
}

int tokenizeText(void *context, const char *text, int length, TokenCallback emit)
{
    bool ascii = true;
    for (int i = 0; i < length; ++i) {
        if (static_cast<unsigned char>(text[i]) >= 0x80) {
            ascii = false;
            break;
        }
    }
    if (ascii)
        return tokenizeAscii(context, text, length, emit);

    // Offsets are reported in the folded text; nothing of ours reads them back.
    return forEachTerm(QString::fromUtf8(text, length), [&](QStringView term, qsizetype start, qsizetype end) {
        const QByteArray utf8 = term.toUtf8();
        return emit(context, 0, utf8.constData(), int(utf8.size()), int(qMin<qsizetype>(start, length)),
                    int(qMin<qsizetype>(end, length)));
    });
}

} // namespace

namespace ZDFoldingTokenizer {

bool registerWith(sqlite3 *db, TermObserver observer, void *context)
{
    fts5_api *api = zdFts5Api(db);
    if (!api || api->iVersion < 2)
        return false;
    static fts5_tokenizer tokenizer = {createTokenizer, deleteTokenizer, tokenize};
    auto *userData = new Observer{observer, context};
    return api->xCreateTokenizer(api, name, userData, &tokenizer, deleteObserver) == SQLITE_OK;
}

QStringList terms(const QString &text)
{
    QStringList result;
    forEachTerm(ZDSearchFolding::folded(text), [&](QStringView term, qsizetype, qsizetype) {
        result.append(term.toString());
        return SQLITE_OK;
    });
    return result;
}

bool isSingleTerm(const QString &folded)
{
    if (folded.isEmpty())
        return false;
    for (QChar c : folded) {
        if (c.isSurrogate() || !c.isLetterOrNumber())
            return false;
    }
    return true;
}

} // namespace ZDFoldingTokenizer
