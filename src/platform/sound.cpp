#include "platform/sound.h"

#include <QAudioDevice>
#include <QFileInfo>
#include <QMediaDevices>
#include <QSoundEffect>
#include <QUrl>

namespace tolmar {

SoundPlayer::SoundPlayer() = default;
SoundPlayer::~SoundPlayer() = default;

bool SoundPlayer::hasAudioOutput()
{
    // Offscreen runs have no one to hear the bell, and probing the sound system there can
    // only produce noise on stderr.
    if (qEnvironmentVariable("QT_QPA_PLATFORM") == QLatin1String("offscreen"))
        return false;
    return !QMediaDevices::audioOutputs().isEmpty();
}

bool SoundPlayer::play(const QString& file)
{
    if (file.isEmpty() || !QFileInfo::exists(file) || !hasAudioOutput())
        return false;
    if (!m_effect || m_loaded != file) {
        m_effect = std::make_unique<QSoundEffect>();
        m_effect->setSource(file.startsWith(QLatin1Char(':'))
                                ? QUrl(QStringLiteral("qrc") + file)
                                : QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath()));
        m_loaded = file;
    }
    if (m_effect->status() == QSoundEffect::Error)
        return false;
    m_effect->play();
    return true;
}

}  // namespace tolmar
