#ifndef ASSERTION_P_H
#define ASSERTION_P_H

#include <QtGlobal>

/// Ends the process, in release builds too, when `holds` is false: for programming errors that
/// would otherwise corrupt data. `source` is the log's source name, `condition` the text that the
/// message names.
inline void assertThat(bool holds, const char* condition, const char* source, int line)
{
    if (Q_UNLIKELY(!holds))
        qFatal("ASSERT: \"%s\" in %s, line %d", condition, source, line);
}

#endif
