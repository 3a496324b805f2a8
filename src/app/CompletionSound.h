#pragma once

#include "foundation/AiffSound.h"

#include <QObject>

class QAudioSink;
class QBuffer;

// The sound played when long work is done ("harp.aif"). It is read into memory at start, which
// costs a few milliseconds and touches no audio device; the audio output is opened only when the
// sound is first played. A missing file, device or audio backend leaves it silent: never an
// error, a warning or a delay.
class CompletionSound : public QObject
{
    Q_OBJECT
public:
    explicit CompletionSound(const QString &path, QObject *parent = nullptr);
    ~CompletionSound() override;

    bool isLoaded() const { return m_sound.isValid(); }
    void play();

private:
    AiffSound m_sound;
    QAudioSink *m_sink = nullptr;
    QBuffer *m_buffer = nullptr;
};
