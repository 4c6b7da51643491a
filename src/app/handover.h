#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QSysInfo>

#include <optional>

// How text is handed over to a running instance: a message is a 4-byte
// big-endian length and that many bytes of UTF-8 text; the receiver answers
// one byte once it has taken the text. Both ends use this one piece of code,
// and so does the browsers' native messaging, whose length is in the
// machine's own byte order.
namespace HandOver {

// The longest text a message may carry.
constexpr quint32 kMaxLength = 16 * 1024 * 1024;
// The byte the receiver answers with.
constexpr char kTaken = 'K';

QByteArray frame(const QByteArray &text, QSysInfo::Endian order = QSysInfo::BigEndian);

// Takes a connection's bytes as they arrive and gives its messages as they
// complete. Bytes are appended once and a message is taken out in one piece,
// so a message costs time in line with its length however it is cut.
class Reader
{
public:
    explicit Reader(QSysInfo::Endian order = QSysInfo::BigEndian, quint32 maxLength = kMaxLength)
        : m_order(order), m_maxLength(maxLength)
    {
    }

    enum class State {
        Message,  // `message` holds the next text
        NeedMore, // no message is complete yet
        TooLong,  // a message announced more than the longest length
    };

    void append(QByteArrayView bytes);
    State next(QByteArray *message);
    qsizetype buffered() const { return m_buffer.size() - m_start; }

private:
    QSysInfo::Endian m_order;
    quint32 m_maxLength;
    QByteArray m_buffer;
    qsizetype m_start = 0; // where the next message begins
};

} // namespace HandOver
