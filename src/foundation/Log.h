#pragma once

#include <QLoggingCategory>

// The application's logging category. Progress and debugging lines go here, one formatted line
// each, with the texts the rest of the program gives. Only warnings are shown unless asked:
// --verbose (kVerboseLoggingRules) or QT_LOGGING_RULES="tessary.info=true".
Q_DECLARE_LOGGING_CATEGORY(lcTessary)

// The filter rules that show the category's progress and debugging lines.
inline constexpr char kVerboseLoggingRules[] = "tessary.debug=true\ntessary.info=true";
