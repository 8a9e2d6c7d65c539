#pragma once

#include <memory>

class ZDHighlighter;

/// The highlighter a command uses: the program's shared one when there is one, else one of its
/// own for as long as this object lives.
class ZDCliHighlighter
{
public:
    ZDCliHighlighter();
    ~ZDCliHighlighter();

    ZDHighlighter &get();

private:
    std::unique_ptr<ZDHighlighter> m_own;
};
