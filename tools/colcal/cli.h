#pragma once

#include <QJsonObject>
#include <QByteArray>
#include <QPoint>
#include <QSize>
#include <QVector>
#include <QString>
#include <QStringList>

#include <stdexcept>
#include <vector>

namespace cli {

/// Exit codes shared by every subcommand.
enum ExitCode { Ok = 0, Failed = 1, BadInput = 2, EngineError = 3 };

/// A failure that ends the command with a one-line message on stderr.
class Error : public std::runtime_error {
public:
    Error(const QString& message, int exitCode);
    int exitCode() const { return m_exitCode; }

private:
    int m_exitCode;
};

/// One option of a subcommand; an empty `valueName` makes it a flag.
struct Option {
    QString name;
    QString valueName;
    QString description;
};

/// What `colcal NAME --help` explains and what its words may hold.
struct Command {
    QString name;
    QString arguments;  ///< the positional words, as the usage line shows them
    QString summary;
    QVector<Option> options;
    QStringList examples;
};

/// `colcal NAME --help`: usage line, summary, every option, examples.
QString helpText(const Command& command);

/// Command-line words after the subcommand: positionals, `--flag`, `--option value`
/// and "--grid" with its eight numbers, as `command` declares them; anything
/// else is refused (BadInput) naming the word.
class Args {
public:
    Args(const QStringList& words, const Command& command);
    const QStringList& positional() const { return m_positional; }
    bool flag(const QString& name) const { return m_flags.contains(name); }
    bool has(const QString& name) const;
    QString value(const QString& name, const QString& fallback = QString()) const;
    /// The "--grid" corners, empty without --grid.
    const QVector<QPoint>& grid() const { return m_grid; }

private:
    QStringList m_positional;
    QStringList m_flags;
    QStringList m_valuedNames;
    QStringList m_values;
    QVector<QPoint> m_grid;
};

/// Rows of comma-separated numbers from `path` ("-" reads stdin); lines starting
/// with "#" and blank lines are skipped. Each row must hold `columns` finite
/// numbers in [lo, hi]; `rows` > 0 also fixes the number of rows.
std::vector<std::vector<double>> readNumberRows(const QString& path, int columns, int rows,
                                                double lo, double hi);

/// Takes "--grid x1 y1 x2 y2 x3 y3 x4 y4" (top-left, top-right, bottom-left,
/// bottom-right) out of `words`; empty when there is no --grid.
QVector<QPoint> takeGrid(QStringList& words);

/// Refuses (BadInput, the message starting with `what`) grid corners outside
/// a `size` image and corners that do not outline a convex quadrilateral in
/// the order top-left, top-right, bottom-left, bottom-right (crossed, folded,
/// mirrored or coinciding).
void checkGrid(const QVector<QPoint>& corners, const QSize& size, const QString& what);

/// A feature-persistence file whole ("-" reads stdin), a UTF-8 byte-order
/// mark left out; refuses (BadInput, naming the file) a missing or unreadable
/// file and one larger than kMaxSettingsBytes.
QByteArray readSettingsFile(const QString& path);
/// Settings texts are a few ten kilobytes; this leaves room for any camera.
constexpr qint64 kMaxSettingsBytes = 16 * 1024 * 1024;

/// One JSON object on stdout, compact, newline-terminated.
void printJson(const QJsonObject& object);
/// Text on stdout as it stands.
void print(const QString& text);

}  // namespace cli
