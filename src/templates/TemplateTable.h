#pragma once

// Which of the two template tables an action came from (the table whose contextual menu or
// row was used).
enum class TemplateTable { BuiltIn, User };
