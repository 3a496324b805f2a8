#pragma once

#include <QLoggingCategory>

// The application's logging category. Progress and debugging lines go here, one formatted line
// each, with the texts the rest of the program gives.
Q_DECLARE_LOGGING_CATEGORY(lcTessary)
