#ifndef DEMO_DIAGNOSTICPLUGIN_H
#define DEMO_DIAGNOSTICPLUGIN_H

#include "BusinessBase/businesspluginbase.h"

class Modem;

/// The state of everything at one moment, and what is wrong with it.
class DiagnosticPlugin : public BusinessPluginBase
{
    Q_OBJECT

public:
    explicit DiagnosticPlugin(Modem& modem);
    QString pluginName() override { return QStringLiteral("Diagnostic"); }

private Q_SLOTS:
    int info(CDataValue& request, CDataValue& response);
    int findings(CDataValue& request, CDataValue& response);

private:
    Modem& m_modem;
};

#endif
