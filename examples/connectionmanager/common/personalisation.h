#ifndef DEMO_PERSONALISATION_H
#define DEMO_PERSONALISATION_H

#include <QMap>
#include <QSet>
#include <QString>

/// What this installation's files under "Resources/Data/Perso" say of one of the demo's modules:
/// its plug-ins in the personalisation file, the rest in the module's own file. An installation
/// without a personalisation file has every plug-in, no feature and no device.
///
/// Read once, by the constructor. Main thread only.
class Personalisation
{
public:
    explicit Personalisation(const QString& module);

    /// False for every plug-in when the file does not mark the module as available.
    bool hasPlugin(const QString& plugin) const;
    bool hasFeature(const QString& feature) const;
    /// The item "Devices": the devices that are plugged in from the start, their IDs by their
    /// names. Entries without a name or an ID are left out.
    QMap<QString, QString> devices() const;

private:
    QString m_module;
    QSet<QString> m_plugins;
    bool m_isPersonalised;
};

#endif
