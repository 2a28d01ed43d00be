#ifndef DEMO_EQUIPMENTPLUGIN_H
#define DEMO_EQUIPMENTPLUGIN_H

#include "BusinessBase/businesspluginbase.h"

class Modem;

/// Who made the device, and which device and SIM these are. The smallest plug-in: copy it to
/// begin one.
class EquipmentPlugin : public BusinessPluginBase
{
    Q_OBJECT

public:
    explicit EquipmentPlugin(Modem& modem);
    QString pluginName() override { return QStringLiteral("Equipment"); }

private Q_SLOTS:
    int equipment(CDataValue& request, CDataValue& response);

private:
    Modem& m_modem;
};

#endif
