#include "app/CompletionSound.h"

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSink>
#include <QBuffer>
#include <QMediaDevices>

CompletionSound::CompletionSound(const QString &path, QObject *parent)
    : QObject(parent)
    , m_sound(AiffSound::fromFile(path))
{
}

CompletionSound::~CompletionSound()
{
    if (m_sink)
        m_sink->stop();
}

void CompletionSound::play()
{
    if (!m_sound.isValid())
        return;
    if (!m_sink) {
        const QAudioDevice device = QMediaDevices::defaultAudioOutput();
        if (device.isNull())
            return;
        QAudioFormat format;
        format.setSampleRate(m_sound.sampleRate);
        format.setChannelCount(m_sound.channels);
        format.setSampleFormat(QAudioFormat::Int16);
        if (!device.isFormatSupported(format))
            return;
        m_sink = new QAudioSink(device, format, this);
        m_buffer = new QBuffer(&m_sound.pcm, this);
    }
    m_sink->stop();
    m_buffer->close();
    m_buffer->open(QIODevice::ReadOnly);
    m_sink->start(m_buffer);
}
