#pragma once

#include <memory>

class ZDAnalytics;
class ZDLanguageRegistry;
class ZDLogger;
class ZDUserDefaults;

struct ZDCoreServicesOptions
{
    bool echoLogToStandardError = false;
};

/// The process-wide services every program of Zandrio sets up first, in this order: the logger,
/// the preferences with their registered defaults, the local analytics recorder (which records
/// only while the user allows it) and the language table. Constructing it installs each as the
/// shared instance; destroying it uninstalls them. Needs a QCoreApplication.
class ZDCoreServices
{
public:
    explicit ZDCoreServices(ZDCoreServicesOptions options = {});
    ~ZDCoreServices();

    ZDLogger &logger() { return *m_logger; }
    ZDUserDefaults &defaults() { return *m_defaults; }
    ZDAnalytics &analytics() { return *m_analytics; }
    ZDLanguageRegistry &languages() { return *m_languages; }

private:
    std::unique_ptr<ZDLogger> m_logger;
    std::unique_ptr<ZDUserDefaults> m_defaults;
    std::unique_ptr<ZDAnalytics> m_analytics;
    std::unique_ptr<ZDLanguageRegistry> m_languages;
};
