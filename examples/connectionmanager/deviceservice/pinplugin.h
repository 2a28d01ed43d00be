#ifndef DEMO_PINPLUGIN_H
#define DEMO_PINPLUGIN_H

#include "BusinessBase/businesspluginbase.h"

class Modem;

/// The SIM's PIN and PUK. Whether or not a code was right, the answer tells how many attempts are
/// left.
class PinPlugin : public BusinessPluginBase
{
    Q_OBJECT

public:
    explicit PinPlugin(Modem& modem);
    QString pluginName() override { return QStringLiteral("Pin"); }

private Q_SLOTS:
    int state(CDataValue& request, CDataValue& response);
    int verify(CDataValue& request, CDataValue& response);
    int change(CDataValue& request, CDataValue& response);
    int enable(CDataValue& request, CDataValue& response);
    int unblock(CDataValue& request, CDataValue& response);

private:
    int answerWithAttempts(int atError, CDataValue& response);

    Modem& m_modem;
};

#endif
