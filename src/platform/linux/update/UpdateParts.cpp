#include "platform/linux/update/UpdateParts.h"

#include "platform/linux/update/LinkedUpdateParts.h"
#include "platform/linux/update/SignatureCheckSodium.h"
#include "platform/linux/update/UnpackArchive.h"
#include "platform/linux/update/UpdateFeedSoup.h"

#include <memory>

namespace quillox {

namespace {

    UpdateFeed* makeFeed(RunLoop& runLoop)
    {
        return std::make_unique<UpdateFeedSoup>(runLoop).release();
    }

    SignatureCheck* makeSignatureCheck(const std::string& publicKey, RunLoop& runLoop)
    {
        return std::make_unique<SignatureCheckSodium>(publicKey, runLoop).release();
    }

} // namespace

const UpdateParts linkedUpdateParts { makeFeed, makeSignatureCheck, unpackArchive };

} // namespace quillox
