#ifndef DEMO_PHONEBOOKPLUGIN_H
#define DEMO_PHONEBOOKPLUGIN_H

#include "BusinessBase/businesspluginbase.h"

class Modem;

/// The phonebook on the SIM.
class PhonebookPlugin : public BusinessPluginBase
{
    Q_OBJECT

public:
    explicit PhonebookPlugin(Modem& modem);
    QString pluginName() override { return QStringLiteral("Phonebook"); }

private Q_SLOTS:
    int list(CDataValue& request, CDataValue& response);
    int add(CDataValue& request, CDataValue& response);
    int storage(CDataValue& request, CDataValue& response);

private:
    Modem& m_modem;
};

#endif
