#include "QVKit/Platform/QVLoggingCategories.h"

// Debug output is off unless asked for with QT_LOGGING_RULES="qvkit.*.debug=true".
Q_LOGGING_CATEGORY(lcQVPlatform, "qvkit.platform", QtInfoMsg)
Q_LOGGING_CATEGORY(lcQVPropertyList, "qvkit.plist", QtInfoMsg)
Q_LOGGING_CATEGORY(lcQVSettings, "qvkit.settings", QtInfoMsg)
Q_LOGGING_CATEGORY(lcQVLocalization, "qvkit.localization", QtInfoMsg)
Q_LOGGING_CATEGORY(lcQVText, "qvkit.text", QtInfoMsg)
Q_LOGGING_CATEGORY(lcQVCollections, "qvkit.collections", QtInfoMsg)
Q_LOGGING_CATEGORY(lcQVApplication, "qvkit.application", QtInfoMsg)
Q_LOGGING_CATEGORY(lcQVInput, "qvkit.input", QtInfoMsg)
Q_LOGGING_CATEGORY(lcQVSystem, "qvkit.system", QtInfoMsg)
