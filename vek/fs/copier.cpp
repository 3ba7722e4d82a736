#include "vek/fs/copier.h"

#include <new>
#include <utility>

#include "vek/base/scope_guard.h"
#include "vek/exception.h"

namespace vek::fs {

namespace {

constexpr std::uint32_t ownBufferSize = 512;

}  // namespace

void Copier::setBuffer(char* buffer, std::uint32_t size) {
    if (userBuffer == nullptr && ownBuffer == nullptr) {
        userBuffer = size == 0 ? nullptr : buffer;
        bufferSize = size;
    }
}

void Copier::copy(const File& from, const File& to) {
    run([&] {
        sourceBorrowed = true;
        source.adopt(from.nativeHandle());
        takeAttributes();
        source.seek(0, Whence::begin);
        targetBorrowed = true;
        target.adopt(to.nativeHandle());
        emptyTarget();
        transfer();
    });
}

void Copier::copy(File&& from, const std::string& to) {
    run([&] {
        source.adopt(from.release());
        takeAttributes();
        openTarget(to);
        transfer();
    });
}

void Copier::copy(const std::string& from, const std::string& to) {
    run([&] {
        if (openSource(from)) {
            openTarget(to);
            transfer();
        }
    });
}

void Copier::copy(const std::string& from, File&& to) {
    run([&] {
        if (openSource(from)) {
            target.adopt(to.release());
            emptyTarget();
            transfer();
        }
    });
}

// One copy, `step`, with both sides finished in any case.
template <class Step>
void Copier::run(Step step) {
    ScopeGuard<Copier> guard(this, &finishQuietly);
    step();
    finishSource();
    finishTarget();
    guard.dismiss();
}

bool Copier::openSource(const std::string& path) {
    try {
        source.open(path, Access::read,
                    (options & noFollowSource) != 0 ? std::uint32_t{noFollow} : 0u);
    } catch (const IsASymlinkError&) {
        return false;
    }
    takeAttributes();
    return true;
}

void Copier::openTarget(const std::string& path) {
    target.open(
        path, Access::write,
        (options & overwriteTarget) != 0 ? createIfMissing | replace : std::uint32_t{mustBeNew},
        attributes);
}

// Without given attributes those of the source are read. They hold no access rights here, so
// nothing is done with them; only the failure to read them counts.
void Copier::takeAttributes() {
    attributes = nullptr;
    if (givenAttributes != nullptr) {
        attributes = *givenAttributes;
        return;
    }
    BY_HANDLE_FILE_INFORMATION unused = {};
    if (GetFileInformationByHandle(source.nativeHandle(), &unused) == 0) {
        throw OsError(GetLastError());
    }
}

void Copier::emptyTarget() {
    target.seek(0, Whence::begin);
    target.resize(0);
}

void Copier::transfer() {
    char* const buffer = readyBuffer();
    while (const std::uint32_t count = source.read(buffer, bufferSize)) {
        for (std::uint32_t done = 0; done < count;) {
            done += target.write(buffer + done, count - done);
        }
    }
}

char* Copier::readyBuffer() {
    if (bufferSize == 0) {
        bufferSize = ownBufferSize;
        ownBuffer.reset(new (std::nothrow) char[bufferSize]);
    }
    char* const buffer = ownBuffer ? ownBuffer.get() : userBuffer;
    if (buffer == nullptr) {
        throw UsageError("bad buffer passed to Copier instance");
    }
    return buffer;
}

void Copier::finishSource() {
    if (std::exchange(sourceBorrowed, false)) {
        source.release();
    } else {
        source.close();
    }
}

void Copier::finishTarget() {
    if (std::exchange(targetBorrowed, false)) {
        target.release();
    } else {
        target.close();
    }
}

void Copier::finishQuietly(Copier* copier) {
    const auto drop = [copier](void (Copier::*finish)()) {
        try {
            (copier->*finish)();
        } catch (const Exception&) {
            // The first failure is already being thrown.
        }
    };
    drop(&Copier::finishSource);
    drop(&Copier::finishTarget);
}

}  // namespace vek::fs
