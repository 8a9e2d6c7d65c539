#include "ZDCliHighlighter.h"

#include "ZDHighlighter.h"

ZDCliHighlighter::ZDCliHighlighter()
{
    if (!ZDHighlighter::sharedHighlighter())
        m_own = std::make_unique<ZDHighlighter>();
}

ZDCliHighlighter::~ZDCliHighlighter() = default;

ZDHighlighter &ZDCliHighlighter::get()
{
    return m_own ? *m_own : *ZDHighlighter::sharedHighlighter();
}
