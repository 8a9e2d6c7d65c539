#include "ZDLanguage.h"

ZDLanguage::ZDLanguage(QString identifier, QString displayName, QStringList aliases, QStringList mimeTypes,
                       QStringList UTIStrings, QStringList fileExtensions)
    : m_identifier(std::move(identifier)), m_displayName(std::move(displayName)), m_aliases(std::move(aliases)),
      m_mimeTypes(std::move(mimeTypes)), m_UTIStrings(std::move(UTIStrings)),
      m_fileExtensions(std::move(fileExtensions))
{
}
