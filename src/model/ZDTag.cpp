#include "ZDTag.h"

#include "ZDRecordDirectory.h"
#include "ZDTextFolding.h"

ZDTag::ZDTag()
    : ZDTag(QStringLiteral("untitled tag"))
{
}

ZDTag::ZDTag(const QString &title)
    : ZDTag(title, zdNewUUIDString())
{
}

ZDTag::ZDTag(const QString &title, const QString &UUID)
    : m_title(title)
    , m_UUID(UUID)
{
}

QString ZDTag::title() const
{
    std::lock_guard lock(m_mutex);
    return m_title;
}

void ZDTag::setTitle(const QString &title)
{
    std::lock_guard lock(m_mutex);
    m_title = title;
}

bool ZDTag::isTagNameEquivalentToName(const QString &name, const QString &other)
{
    return ZDTextFolding::folded(name) == ZDTextFolding::folded(other);
}

QString ZDTag::description() const
{
    return QStringLiteral("<ZDTag: 0x%1 %2>").arg(quintptr(this), 0, 16).arg(title());
}
