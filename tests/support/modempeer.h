#ifndef TESTS_SUPPORT_MODEMPEER_H
#define TESTS_SUPPORT_MODEMPEER_H

#include <QFile>
#include <QList>
#include <QTest>

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

/// The far end of a serial line that says exactly what a test tells it to, faults above all: a
/// pseudo-terminal, and a symbolic link to the end that the tested program opens.
///
///     ModemPeer peer(folder.filePath("modem"));
///     peer.answer("AT+CSQ", "\r\n+CSQ: 7,99\r\n\r\nOK\r\n");
///     peer.answer("AT+CIMI", "");      // never answered
///
/// A command that no answer is given for is answered with "OK", but for the few questions that a
/// modem must be asked first. It runs in a thread of its own, so that the tested code may wait for
/// it in the thread of the test.
class ModemPeer
{
public:
    explicit ModemPeer(const QString& link)
        : m_link(QFile::encodeName(link))
    {
        if (::pipe(m_wake) != 0)
            qFatal("ModemPeer: no pipe");
        for (const char* probe : {"+CMEE", "+CSCS", "+CMGF"})
            inform("AT" + QByteArray(probe) + '?', QByteArray(probe) + ": 1");
        inform("AT+CIND=?", "+CIND: (\"battchg\",(0-5)),(\"signal\",(0-5))");
        inform("AT+CGACT?", "+CGACT: 1,0");
        plug();
        m_thread = std::thread([this] { run(); });
    }
    ~ModemPeer()
    {
        change([this] { m_isEnding = true; });
        m_thread.join();
        unplugNow();
        ::close(m_wake[0]);
        ::close(m_wake[1]);
    }
    ModemPeer(const ModemPeer&) = delete;
    ModemPeer& operator=(const ModemPeer&) = delete;

    /// From now on the command is answered with these bytes; none at all when they are empty.
    void answer(const QByteArray& command, const QByteArray& bytes)
    {
        change([&] { m_answers[command.toStdString()] = bytes.toStdString(); });
    }
    /// The same with one line of information and "OK".
    void inform(const QByteArray& command, const QByteArray& line)
    {
        answer(command, "\r\n" + line + "\r\n\r\nOK\r\n");
    }
    /// Without an answer to anything, whatever was given.
    void setSilent(bool isSilent)
    {
        change([&] { m_isSilent = isSilent; });
    }

    /// From now on every command is answered with what this makes of it; null: with what was given.
    /// It is called in the thread of the peer.
    using Answerer = std::function<std::string(const std::string& command)>;
    void setAnswerer(const Answerer& answerer)
    {
        change([&] { m_answerer = answerer; });
    }

    /// Says this unasked.
    void say(const QByteArray& bytes)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        write(bytes.toStdString());
    }

    /// Takes the device away, as pulling out the plug does; waits until it is gone.
    void unplug()
    {
        change([this] { m_isPlugged = false; });
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_master < 0; });
    }
    /// A new device under the same link.
    void plug()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0)
            qFatal("ModemPeer: no pseudo-terminal");
        const char* name = ::ptsname(m_master);
        m_slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios settings = {};
        ::tcgetattr(m_slave, &settings);
        ::cfmakeraw(&settings);
        ::tcsetattr(m_slave, TCSANOW, &settings);
        if (::symlink(name, m_link.constData()) != 0)
            qFatal("ModemPeer: no link");
        m_isPlugged = true;
        wake();
    }

    /// The commands so far.
    QList<QByteArray> commands() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        QList<QByteArray> commands;
        for (const std::string& command : m_commands)
            commands += QByteArray::fromStdString(command);
        return commands;
    }
    /// Waits until the command has come `times` times.
    bool hears(const QByteArray& command, int times = 1) const
    {
        return QTest::qWaitFor([&] { return commands().count(command) >= times; }, 30000);
    }

private:
    template<class Change>
    void change(Change apply)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        apply();
        wake();
    }
    void wake()
    {
        if (::write(m_wake[1], "", 1) != 1)
            qFatal("ModemPeer: cannot wake");
    }
    void write(const std::string& bytes)
    {
        if (::write(m_master, bytes.data(), bytes.size()) < 0)
            qWarning("ModemPeer: cannot write");
    }

    void run()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_isEnding) {
            if (!m_isPlugged)
                unplugNow();
            m_changed.notify_all();
            pollfd files[] = {{m_wake[0], POLLIN, 0}, {m_master, POLLIN, 0}};
            lock.unlock();
            ::poll(files, 2, -1);
            char bytes[256];
            if ((files[0].revents & POLLIN) != 0 && ::read(m_wake[0], bytes, sizeof bytes) < 0)
                qFatal("ModemPeer: no pipe");
            lock.lock();
            if ((files[1].revents & POLLIN) != 0)
                readCommands();
        }
    }
    void readCommands()
    {
        char bytes[256];
        const auto count = ::read(m_master, bytes, sizeof bytes);
        for (int i = 0; i < count; ++i) {
            if (bytes[i] != '\r') {
                m_command += bytes[i];
            } else if (!m_command.empty()) {
                m_commands.push_back(m_command);
                if (!m_isSilent)
                    write(answerTo(m_command));
                m_command.clear();
            }
        }
    }
    std::string answerTo(const std::string& command) const
    {
        if (m_answerer)
            return m_answerer(command);
        const auto answer = m_answers.find(command);
        return answer != m_answers.end() ? answer->second : "\r\nOK\r\n";
    }
    void unplugNow()
    {
        if (m_master < 0)
            return;
        ::unlink(m_link.constData());
        ::close(m_slave);
        ::close(m_master);
        m_master = -1;
        m_command.clear();
    }

    const QByteArray m_link;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread m_thread;
    int m_wake[2] = {-1, -1};
    int m_master = -1;
    int m_slave = -1; // held, so that the line stays when the program closes its end
    // Nothing here shares its content with a copy in the other thread.
    std::map<std::string, std::string> m_answers;
    Answerer m_answerer;
    std::vector<std::string> m_commands;
    std::string m_command;
    bool m_isPlugged = false;
    bool m_isSilent = false;
    bool m_isEnding = false;
};

#endif
