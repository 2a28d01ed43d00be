#ifndef LOGTASK_LOGFILE_P_H
#define LOGTASK_LOGFILE_P_H

#include <QString>

#include <atomic>
#include <cstddef>
#include <memory>

/// The file of the log. Text is kept back until there is enough of it, or flush() is called.
///
/// When the disk is full, what finds no room is lost, nothing gathers, and writing goes on when
/// there is room again. Then a line end, if the last line was cut, and "N lines lost here" stand in
/// the place of the lost lines. A process without signals for that (SIGXFSZ, SIGPIPE) finds a
/// limit on file sizes and a pipe without a reader to be full disks.
///
/// For one thread.
class LogFile
{
public:
    LogFile() = default;
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Opens for writing and makes a file that does not exist; truncates it unless `append`. Only
    /// the owner may read and write the file, whatever the umask and whatever the mode of an older
    /// file: pipes and devices keep theirs. False when it cannot be opened. To be called once.
    bool open(const QString& path, bool append);

    /// Without an open file, nothing happens.
    void write(const char* text, std::size_t size);
    void flush();

    /// For a signal handler: writes out what was kept back, and `text` after it. What a full disk
    /// has lost is not told. Also within a call of another function by the same thread; the text of
    /// that call may then be lost or doubled.
    void writeInCrash(const char* text, std::size_t size);

private:
    void put(const char* text, std::size_t size);
    bool putNotice();
    std::size_t writeAll(const char* text, std::size_t size);
    void lose(const char* text, std::size_t size);

    int m_file = -1;
    std::unique_ptr<char[]> m_kept;
    std::atomic<std::size_t> m_keptSize{0};

    bool m_isLineOpen = false;     // whether the file ends within a line
    bool m_isLosing = false;       // since the last notice
    bool m_isLossOpen = false;     // whether what is lost ends within a line
    unsigned long long m_lost = 0; // line ends among it
};

#endif
