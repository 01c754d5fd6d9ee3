#include "core/alocalizedplugin.h"

#include <QCoreApplication>

namespace Core {
namespace Plugin {

ALocalizedPlugin::ALocalizedPlugin(QObject* parent) : IPlugin(parent) {}

ALocalizedPlugin::~ALocalizedPlugin()
{
    if (m_installed && QCoreApplication::instance())
        QCoreApplication::removeTranslator(&m_translator);
}

bool ALocalizedPlugin::setLanguage(const QString& language)
{
    if (m_installed) {
        QCoreApplication::removeTranslator(&m_translator);
        m_installed = false;
    }
    m_language = language;
    const QString file = translationFile(language);
    if (file.isEmpty() || !m_translator.load(file))
        return false;
    m_installed = QCoreApplication::installTranslator(&m_translator);
    return m_installed;
}

QString ALocalizedPlugin::translationFile(const QString&) const { return {}; }

}  // namespace Plugin
}  // namespace Core
