#include "platform/linux/update/SignatureCheckSodium.h"

#include "platform/linux/system/FileDescriptor.h"
#include "platform/linux/update/WorkerJob.h"

#include <fcntl.h>
#include <sodium.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <vector>

namespace quillox {

namespace {

    const unsigned char* bytesOf(std::string_view text)
    {
        return reinterpret_cast<const unsigned char*>(text.data());
    }

    std::string hexadecimal(const std::array<unsigned char, crypto_hash_sha256_BYTES>& hash)
    {
        std::string text(2 * hash.size() + 1, '\0');
        sodium_bin2hex(text.data(), text.size(), hash.data(), hash.size());
        text.pop_back();
        return text;
    }

} // namespace

SignatureCheckSodium::SignatureCheckSodium(std::string publicKey, RunLoop& runLoop)
    : m_publicKey(std::move(publicKey))
    , m_runLoop(runLoop)
{
}

bool SignatureCheckSodium::isSigned(std::string_view bytes, std::string_view signature) const
{
    return sodium_init() >= 0 && signature.size() == crypto_sign_BYTES
        && m_publicKey.size() == crypto_sign_PUBLICKEYBYTES
        && crypto_sign_verify_detached(
               bytesOf(signature), bytesOf(bytes), bytes.size(), bytesOf(m_publicKey))
        == 0;
}

Handle SignatureCheckSodium::hashFile(
    const std::string& path, std::function<void(std::optional<std::string>)> onHash)
{
    return runOnThread<std::optional<std::string>>(
        m_runLoop,
        [path](const std::atomic<bool>& isCancelled) { return sha256OfFile(path, isCancelled); },
        std::move(onHash));
}

std::optional<std::string> sha256OfFile(
    const std::string& path, const std::atomic<bool>& isCancelled)
{
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!file || sodium_init() < 0)
        return std::nullopt;
    crypto_hash_sha256_state state;
    crypto_hash_sha256_init(&state);
    std::vector<unsigned char> block(std::size_t { 256 } << 10);
    while (!isCancelled) {
        const auto count = ::read(file.get(), block.data(), block.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::nullopt;
        if (count > 0) {
            crypto_hash_sha256_update(&state, block.data(), static_cast<std::size_t>(count));
            continue;
        }
        std::array<unsigned char, crypto_hash_sha256_BYTES> hash {};
        crypto_hash_sha256_final(&state, hash.data());
        return hexadecimal(hash);
    }
    return std::nullopt;
}

} // namespace quillox
