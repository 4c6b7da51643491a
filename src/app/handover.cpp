#include "app/handover.h"

#include <QtEndian>

namespace HandOver {

QByteArray frame(const QByteArray &text, QSysInfo::Endian order)
{
    QByteArray message(4, '\0');
    if (order == QSysInfo::BigEndian)
        qToBigEndian<quint32>(quint32(text.size()), message.data());
    else
        qToLittleEndian<quint32>(quint32(text.size()), message.data());
    return message + text;
}

void Reader::append(QByteArrayView bytes)
{
    // What has been taken out goes before the buffer grows again.
    if (m_start > 0 && m_start >= m_buffer.size() / 2) {
        m_buffer.remove(0, m_start);
        m_start = 0;
    }
    m_buffer.append(bytes.data(), bytes.size());
}

Reader::State Reader::next(QByteArray *message)
{
    if (buffered() < 4)
        return State::NeedMore;
    const char *prefix = m_buffer.constData() + m_start;
    const quint32 length = m_order == QSysInfo::BigEndian ? qFromBigEndian<quint32>(prefix)
                                                          : qFromLittleEndian<quint32>(prefix);
    if (length > m_maxLength)
        return State::TooLong;
    if (quint64(buffered() - 4) < length)
        return State::NeedMore;
    *message = m_buffer.mid(m_start + 4, length);
    m_start += 4 + qsizetype(length);
    return State::Message;
}

} // namespace HandOver
