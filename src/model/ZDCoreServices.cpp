#include "ZDCoreServices.h"

#include "ZDAnalytics.h"
#include "ZDLanguageRegistry.h"
#include "ZDLogger.h"
#include "ZDUserDefaults.h"

ZDCoreServices::ZDCoreServices(ZDCoreServicesOptions options)
{
    ZDLogger::Options logOptions;
    logOptions.echoToStandardError = options.echoLogToStandardError;
    m_logger = std::make_unique<ZDLogger>(ZDLogger::defaultDirectory(), logOptions);
    ZDLogger::install(m_logger.get());

    m_defaults = std::make_unique<ZDUserDefaults>();
    ZDUserDefaults::install(m_defaults.get());
    m_logger->setDetailedLoggingEnabled(m_defaults->enableDetailedLogging());

    m_analytics = std::make_unique<ZDAnalytics>();
    ZDUserDefaults *defaults = m_defaults.get();
    m_analytics->setConsentProvider([defaults] { return defaults->sendUsage(); });
    ZDAnalytics::install(m_analytics.get());

    m_languages = std::make_unique<ZDLanguageRegistry>(ZDLanguageRegistry::defaultTablePath(), m_defaults.get());
    ZDLanguageRegistry::install(m_languages.get());
}

ZDCoreServices::~ZDCoreServices()
{
    ZDLanguageRegistry::install(nullptr);
    ZDAnalytics::install(nullptr);
    ZDUserDefaults::install(nullptr);
    m_defaults.reset();
    ZDLogger::install(nullptr);
}
