#pragma once

#include "ZDLanguageRegistry.h"
#include "ZDSearchEngine.h"
#include "ZDSnippet.h"
#include "ZDSnippetPart.h"
#include "ZDTestSupport.h"

#include <gtest/gtest.h>

/// A library held by the test, the real language table and an engine over them.
class SearchTest : public ::testing::Test
{
protected:
    void SetUp() override { ZDLanguageRegistry::install(&registry); }
    void TearDown() override
    {
        engine.reset();
        ZDLanguageRegistry::install(nullptr);
    }

    ZDSnippetPtr addSnippet(const QString &title, const QString &content = {}, const QString &note = {})
    {
        ZDSnippetPtr snippet = ZDSnippet::create(title);
        snippet->parts().first()->setContent(content);
        snippet->parts().first()->setNote(note);
        library.append(snippet);
        return snippet;
    }

    ZDSearchEngine &makeEngine(ZDMulticastDelegateHandler *notifier = nullptr)
    {
        engine = std::make_unique<ZDSearchEngine>([this] { return library; }, notifier);
        return *engine;
    }

    void rebuildAndWait()
    {
        engine->rebuildIndex();
        engine->waitUntilIndexIsIdle();
        ASSERT_TRUE(engine->indexReady());
    }

    static QStringList titles(const ZDSnippetList &snippets)
    {
        QStringList result;
        for (const ZDSnippetPtr &snippet : snippets)
            result.append(snippet->title());
        return result;
    }

    ZDLanguageRegistry registry{ZDTestSupport::sourceResourcesDirectory() + QStringLiteral("/Languages.json")};
    ZDSnippetList library;
    std::unique_ptr<ZDSearchEngine> engine;
};
