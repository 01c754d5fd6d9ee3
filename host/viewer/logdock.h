#pragma once

#include <QDockWidget>

class QTreeWidget;

/// The application log: every "@{source};message" line written through the Qt
/// message logger, from any thread, with its level and source. Other messages
/// go only to the previous handler (the terminal).
class LogDock : public QDockWidget {
    Q_OBJECT
public:
    explicit LogDock(QWidget* parent = nullptr);
    ~LogDock() override;  ///< puts the previous message handler back

    QTreeWidget* list() const { return m_list; }

    /// Splits "@{source};message" into its parts; false for other texts.
    static bool parse(const QString& line, QString* source, QString* message);

private:
    void append(int type, const QString& source, const QString& message);
    static void handler(QtMsgType type, const QMessageLogContext& context, const QString& text);

    QTreeWidget* m_list;
};
