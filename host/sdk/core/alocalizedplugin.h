#pragma once

#include "core/iplugin.h"

#include <QTranslator>

namespace Core {
namespace Plugin {

/// A plug-in with its own translation catalogue, switched by setLanguage.
class ALocalizedPlugin : public IPlugin {
    Q_OBJECT
public:
    explicit ALocalizedPlugin(QObject* parent = nullptr);
    ~ALocalizedPlugin() override;

    /// Installs the catalogue for `language` ("de", "ja" ...) in place of the
    /// previous one; false when there is none (the texts stay untranslated).
    virtual bool setLanguage(const QString& language);
    QString language() const { return m_language; }

protected:
    /// The catalogue file for a language, e.g. ":/ColCal/translations/colcal_de.qm";
    /// empty (the default) when the plug-in has no translations.
    virtual QString translationFile(const QString& language) const;

private:
    QTranslator m_translator;
    bool m_installed = false;
    QString m_language;
};

}  // namespace Plugin
}  // namespace Core
