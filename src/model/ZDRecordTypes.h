#pragma once

#include <QList>

#include <memory>

// The library's records are identity objects owned by the library store and shared by pointer:
// a snippet, part, tag or sidebar node is never copied, only referred to.
class ZDSnippet;
class ZDSnippetPart;
class ZDTag;
class ZDCategoryNode;

using ZDSnippetPtr = std::shared_ptr<ZDSnippet>;
using ZDSnippetPartPtr = std::shared_ptr<ZDSnippetPart>;
using ZDTagPtr = std::shared_ptr<ZDTag>;
using ZDCategoryNodePtr = std::shared_ptr<ZDCategoryNode>;

using ZDSnippetList = QList<ZDSnippetPtr>;
using ZDTagList = QList<ZDTagPtr>;
