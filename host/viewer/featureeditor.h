#pragma once

#include <QSharedPointer>
#include <QWidget>

namespace ParameterCollection {
class IParameterCollection;
class Parameter;
}  // namespace ParameterCollection

/// One camera feature as an editor: a slider with a spin box and its range for
/// float and integer features, a combo box of display names for enumerations,
/// a check box, a line edit, or a button for commands. Read-only features are
/// shown disabled. Failed writes are logged, and the editor shows what the
/// camera holds afterwards.
class FeatureEditor : public QWidget {
    Q_OBJECT
public:
    /// Null when the collection has no feature of that name of a known kind.
    static FeatureEditor* create(const ParameterCollection::IParameterCollection& collection,
                                 const QString& name, QWidget* parent = nullptr);
    ~FeatureEditor() override;

    QString featureName() const { return m_name; }
    /// "Float", "Integer", "Enumeration", "Boolean", "String" or "Command".
    QString kind() const { return m_kind; }
    /// Reads the value, range and access from the camera again.
    void refresh();

signals:
    /// The camera reported a change of this feature.
    void changed();

private:
    struct Impl;
    FeatureEditor(const QString& name, const QString& kind, Impl* impl, QWidget* parent);

    QString m_name;
    QString m_kind;
    Impl* d;
};
