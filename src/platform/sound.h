#pragma once
// Plays a short .wav to draw the desk's attention. Where there is no audio device (a
// server room desk, a test run) it stays silent and reports nothing: a missing bell must
// never stop the work it rings for.

#include <QString>

#include <memory>

class QSoundEffect;

namespace tolmar {

class SoundPlayer {
public:
    SoundPlayer();
    ~SoundPlayer();
    SoundPlayer(const SoundPlayer&) = delete;
    SoundPlayer& operator=(const SoundPlayer&) = delete;

    // Plays the file (a path or a ":/" resource) once. False when nothing could be played:
    // no audio device, or no such file.
    bool play(const QString& file);

    // Whether the machine offers any audio output at all.
    static bool hasAudioOutput();

private:
    std::unique_ptr<QSoundEffect> m_effect;
    QString m_loaded;
};

}  // namespace tolmar
