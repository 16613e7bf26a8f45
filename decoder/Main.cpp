// lumivault-decoder: decodes pictures for lumivault, one after the other, until that closes the channel. Somebody who breaks a
// decoding library by a picture finds himself in a process that can open no file and no connection; see
// platform/Confinement.h. There is nothing to call it for by hand.
//
// Exit status: 0 the other end is gone, 1 it could not be confined, and then it has read nothing.
#include "decoder/DecoderProtocol.h"
#include "decoder/PictureReading.h"
#include "decoder/WarmUp.h"
#include "platform/Confinement.h"
#include "platform/MessageChannel.h"

#include <QCoreApplication>

#include <cstdlib>
#include <exception>
#include <malloc.h>
#include <pthread.h>
#include <unistd.h>

namespace {

// Above what it holds once it has loaded all libraries and read a picture of each kind.
constexpr std::uint64_t MostMemory = std::uint64_t{512} << 20;
// One that hangs is ended by lumivault after two seconds; this is for the case that lumivault is gone.
constexpr unsigned MostSeconds = 10;

// Room that is set aside for each thread counts as memory: there can be as many as there are processors.
void TakeLittleForThreads()
{
    ::mallopt(M_ARENA_MAX, 1);
    constexpr std::size_t StackBytes = 1 << 20;
    pthread_attr_t attributes;
    if (::pthread_attr_init(&attributes) == 0) {
        (void)::pthread_attr_setstacksize(&attributes, StackBytes);
        (void)::pthread_setattr_default_np(&attributes);
        (void)::pthread_attr_destroy(&attributes);
    }
}

bool Write(const QImage& picture, const FileHandle& memory)
{
    // Lines of four bytes a pixel have nothing between them.
    return memory.WriteAt(0, picture.constBits(),
                          static_cast<std::size_t>(picture.sizeInBytes())) == ResultSuccess;
}

DecoderAnswer
Answer(const DecoderRequest& request, const FileHandle& file, const FileHandle& memory)
{
    DecoderAnswer answer;
    answer.number = request.number;
    try {
        const QImage picture =
            ReadPicture(file, {request.pictureBytes, request.mostSide, request.isRough != 0});
        if (!picture.isNull() && Write(picture, memory)) {
            answer.width = picture.width();
            answer.height = picture.height();
        }
    } catch (const std::exception&) {
        // It takes more memory than there is.
    }
    return answer;
}

bool Send(const FileHandle& channel, const DecoderAnswer& answer)
{
    return SendMessage(channel, &answer, sizeof answer) == ResultSuccess;
}

void AnswerAll(const FileHandle& channel)
{
    while (WaitForMessage(channel, -1) == MessageWait::Came) {
        DecoderRequest request;
        const ReceivedMessage message = ReceiveMessage(channel, &request, sizeof request);
        if (message.bytes != sizeof request || request.mark != DecoderMark || message.isCut ||
            message.descriptors.size() != 2) {
            return;
        }
        ::alarm(MostSeconds);
        const DecoderAnswer answer =
            Answer(request, message.descriptors[0], message.descriptors[1]);
        ::alarm(0);
        if (!Send(channel, answer)) {
            return;
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    CloseInheritedDescriptors();
    TakeLittleForThreads();
    const FileHandle channel(STDIN_FILENO);
    {
        const QCoreApplication application(argc, argv);  // tells where what reads pictures stands
        WarmUpDecoders();
    }
    if (ConfineToWhatIsOpen(MostMemory) != ResultSuccess || !Send(channel, DecoderAnswer{})) {
        return EXIT_FAILURE;
    }
    AnswerAll(channel);
    // Without what libraries do at the end, which may take more than is left.
    std::_Exit(EXIT_SUCCESS);
}
