#include "ZDLanguage.h"

ZDLanguage::ZDLanguage(QString identifier, QString displayName, QStringList aliases, QStringList mimeTypes,
                       QStringList UTIStrings, QStringList fileExtensions)
{
    auto data = new Data;
    data->identifier = std::move(identifier);
    data->displayName = std::move(displayName);
    data->aliases = std::move(aliases);
    data->mimeTypes = std::move(mimeTypes);
    data->UTIStrings = std::move(UTIStrings);
    data->fileExtensions = std::move(fileExtensions);
    d.reset(data);
}
