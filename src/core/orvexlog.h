#pragma once

#include "orvexworkbenchglobal.h"

#include <QLoggingCategory>

// Every debug line of the workbench goes through this category, so that a host
// can silence it with QT_LOGGING_RULES="orvex.workbench.debug=false".
ORVEXWORKBENCH_EXPORT Q_DECLARE_LOGGING_CATEGORY(lcWorkbench)

#define orvexDebug() qCDebug(lcWorkbench)
#define orvexWarning() qCWarning(lcWorkbench)
