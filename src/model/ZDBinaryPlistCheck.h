#pragma once

#include <QByteArray>
#include <QString>

/// A structural check of a binary property list before libplist parses it: libplist trusts
/// some things an untrusted file may break (it aborts on strings with embedded NULs and
/// recurses as deep as the file nests). Keyed archives nest only a few levels, so anything
/// deeper, cyclic or out of bounds is refused here.
namespace ZDBinaryPlistCheck {
bool isSafeToParse(const QByteArray &data, QString *reason);
}
