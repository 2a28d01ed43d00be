#ifndef DEMO_LINEWATCH_H
#define DEMO_LINEWATCH_H

#include <QByteArray>
#include <QObject>

#include <memory>

class QSocketNotifier;

/// Tells when others open and close a device node. Where the system cannot tell, the node always
/// counts as open, and `closed` never comes.
class LineWatch : public QObject
{
    Q_OBJECT

public:
    /// Those who have the node open already do not count.
    explicit LineWatch(const QByteArray& path, QObject* parent = nullptr);
    ~LineWatch() override;

    /// Takes notice of what has happened so far, and emits `closed` if it has to.
    void update();
    bool isOpen() const { return m_openCount > 0; }

Q_SIGNALS:
    /// The last one who had opened the node has closed it.
    void closed();

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
    int m_watch = -1;
    int m_openCount = 0;
};

#endif
