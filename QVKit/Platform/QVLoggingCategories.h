#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QLoggingCategory>

// One category per component, for diagnostics beyond the log lines the library
// promises (those go through QVLog, in the default category, word for word).
QVKIT_EXPORT Q_DECLARE_LOGGING_CATEGORY(lcQVPlatform)
QVKIT_EXPORT Q_DECLARE_LOGGING_CATEGORY(lcQVPropertyList)
QVKIT_EXPORT Q_DECLARE_LOGGING_CATEGORY(lcQVSettings)
QVKIT_EXPORT Q_DECLARE_LOGGING_CATEGORY(lcQVLocalization)
QVKIT_EXPORT Q_DECLARE_LOGGING_CATEGORY(lcQVText)
QVKIT_EXPORT Q_DECLARE_LOGGING_CATEGORY(lcQVCollections)
QVKIT_EXPORT Q_DECLARE_LOGGING_CATEGORY(lcQVApplication)
QVKIT_EXPORT Q_DECLARE_LOGGING_CATEGORY(lcQVInput)
QVKIT_EXPORT Q_DECLARE_LOGGING_CATEGORY(lcQVSystem)
