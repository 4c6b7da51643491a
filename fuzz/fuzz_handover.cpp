// The hand-over framing: any byte stream, in any cutting, gives messages no
// longer than allowed, each exactly as long as its prefix said, and never
// more bytes than came in.
#include "app/handover.h"
#include "fuzzcommon.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const qsizetype piece = 1 + data[0] % 64;
    const QByteArray input = Fuzz::bytes(data + 1, size - 1);
    HandOver::Reader reader;
    qsizetype taken = 0;
    for (qsizetype at = 0; at < input.size(); at += piece) {
        reader.append(QByteArrayView(input).sliced(at, qMin(piece, input.size() - at)));
        QByteArray message;
        for (;;) {
            const auto state = reader.next(&message);
            if (state == HandOver::Reader::State::NeedMore)
                break;
            if (state == HandOver::Reader::State::TooLong)
                return 0;
            if (quint32(message.size()) > HandOver::kMaxLength)
                Fuzz::broken("a message longer than allowed");
            taken += 4 + message.size();
        }
    }
    if (taken + reader.buffered() != input.size())
        Fuzz::broken("bytes lost or made up");
    return 0;
}
