#ifndef TESTS_RECORDS_GOLDENRECORDS_H
#define TESTS_RECORDS_GOLDENRECORDS_H

// The vocabulary as it is fixed, read from golden/*.txt. A line without indentation names a
// record; an indented line is one of its fields: key | kind of value | C++ type.

#include <QFile>
#include <QString>
#include <QStringList>

#include <vector>

struct GoldenField
{
    QString key;
    QString kind;
    QString type;
};

struct GoldenRecord
{
    QString name;
    std::vector<GoldenField> fields;
};

inline std::vector<GoldenRecord> readGoldenRecords()
{
    std::vector<GoldenRecord> records;
    for (const char* group : {"connection", "message", "phonebook", "diagnostic"}) {
        QFile file(QStringLiteral(GOLDEN_FOLDER "/%1records.txt").arg(QLatin1String(group)));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qPrintable(file.fileName()));
        const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
        for (const QString& line : lines) {
            if (line.isEmpty())
                continue;
            if (!line.startsWith(QLatin1Char(' '))) {
                records.push_back({line, {}});
                continue;
            }
            const QStringList columns = line.split(QLatin1Char('|'));
            if (columns.size() != 3)
                qFatal("three columns expected: %s", qPrintable(line));
            records.back().fields.push_back(
                {columns[0].trimmed(), columns[1].trimmed(), columns[2].trimmed()});
        }
    }
    return records;
}

inline const std::vector<GoldenRecord>& goldenRecords()
{
    static const std::vector<GoldenRecord> records = readGoldenRecords();
    return records;
}

inline const GoldenRecord& goldenRecord(const QString& name)
{
    for (const GoldenRecord& record : goldenRecords()) {
        if (record.name == name)
            return record;
    }
    qFatal("no golden record %s", qPrintable(name));
    return goldenRecords().front();
}

#endif
