#include "modemsimulator/linewatch.h"

#include <QSocketNotifier>

LineWatch::LineWatch(const QByteArray&, QObject* parent)
    : QObject(parent)
    , m_openCount(1)
{
}

LineWatch::~LineWatch() = default;

void LineWatch::update() {}
