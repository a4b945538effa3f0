#include "prefs/prefsfile.h"

#include "core/errors.h"
#include "core/folders.h"
#include "core/lists.h"
#include "core/safefile.h"
#include "prefs/prefsimages.h"
#include "prefs/prefsrecovery.h"

#include <QtEndian>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The file layer: whole reads and writes at the current position, relative seeks.

OSErr FSRead(int refNum, std::int32_t count, void *buffer) {
    if (count < 0)
        return paramErr;
    auto *bytes = static_cast<char *>(buffer);
    std::int32_t done = 0;
    while (done < count) {
        const ssize_t got = ::read(refNum, bytes + done, std::size_t(count - done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return OSErrFromErrno(errno);
        if (got == 0)
            return eofErr;
        done += std::int32_t(got);
    }
    return noErr;
}

OSErr FSWrite(int refNum, const void *data, std::size_t count) {
    const auto *bytes = static_cast<const char *>(data);
    while (count > 0) {
        const ssize_t put = ::write(refNum, bytes, count);
        if (put < 0 && errno == EINTR)
            continue;
        if (put < 0)
            return OSErrFromErrno(errno);
        bytes += put;
        count -= std::size_t(put);
    }
    return noErr;
}

OSErr SetFPosFromMark(int refNum, off_t offset, off_t *position = nullptr) {
    const off_t result = ::lseek(refNum, offset, SEEK_CUR);
    if (result < 0)
        return errno == EINVAL ? OSErr(posErr) : OSErrFromErrno(errno);
    if (position != nullptr)
        *position = result;
    return noErr;
}

off_t BytesLeft(int refNum) {
    struct stat info {};
    const off_t here = ::lseek(refNum, 0, SEEK_CUR);
    if (::fstat(refNum, &info) != 0 || here < 0)
        return 0;
    return info.st_size > here ? info.st_size - here : 0;
}

// Reads a variable-sized block ("mals", "mpth") into `bytes`. A negative
// length or one past the end of the file is an error; nothing larger than
// what the file still holds is ever allocated.
OSErr LoadBytes(int refNum, std::int32_t length, QByteArray *bytes) {
    OSErr err = noErr;
    if (length < 0)
        err = paramErr;
    else if (length > BytesLeft(refNum))
        err = eofErr;
    if (err != noErr) {
        TestError(err);
        return err;
    }
    bytes->resize(length);
    return LoadPreference(refNum, length, bytes->data(), length);
}

OSErr ReadBlocks(int refNum) {
    OSErr status = noErr;
    MenuSpec *lastMenu = nullptr;
    while (status == noErr) {
        off_t tagStart = 0;
        SetFPosFromMark(refNum, 0, &tagStart);

        OSType tag = 0;
        status = FSRead(refNum, 4, &tag);
        TestError(status);
        if (status != noErr)
            break;
        tag = qFromBigEndian(tag);
        if (tag == kEndTag)
            break;

        std::int32_t length = 0;
        status = FSRead(refNum, 4, &length);
        TestError(status);
        if (status != noErr)
            break;
        length = qFromBigEndian(length);

        if (tag == kAppleMenuSettingsTag) {
            // Converted before the read so that a short block leaves the
            // remaining fields as they were once converted back.
            ToSaveAppleMenuSettings(&appleMenuSettings);
            status = LoadPreference(refNum, length, &appleMenuSettings, sizeof appleMenuSettings);
            ToLoadAppleMenuSettings(&appleMenuSettings);
        } else if (tag == kGeneralSettingsTag) {
            ToSaveGeneralSettings(&generalSettings);
            status = LoadPreference(refNum, length, &generalSettings, sizeof generalSettings);
            ToLoadGeneralSettings(&generalSettings);
        } else if (tag == kMenuSpecTag) {
            MenuSpecImage image{};
            ToSaveMenuSpec(&image);
            status = LoadPreference(refNum, length, &image, sizeof image);
            ToLoadMenuSpec(&image);
            if (status != noErr)
                break;
            // The 70-byte folder image names no path here; the "mpth" block does.
            const FSSpec noFolder;
            lastMenu = AddMenuToPreferences(&status, image.side, image.contents, image.titleKind,
                                            &noFolder);
        } else if (tag == kMenuAliasTag) {
            QByteArray alias;
            status = LoadBytes(refNum, length, &alias);
            if (status == noErr && lastMenu != nullptr)
                lastMenu->folderAlias = alias;
        } else if (tag == kMenuPathTag) {
            QByteArray path;
            status = LoadBytes(refNum, length, &path);
            // Only an absolute path without NUL bytes can name a folder.
            if (status == noErr && lastMenu != nullptr && path.startsWith('/') &&
                !path.contains('\0'))
                lastMenu->folder.path = path;
        } else {
            off_t after = 0;
            status = SetFPosFromMark(refNum, length, &after);
            // A skip that does not get past its own tag would read the same
            // blocks for ever.
            if (status == noErr && after <= tagStart)
                status = posErr;
            TestError(status);
        }
    }
    return status;
}

} // namespace

FSSpecImage MakeFSSpecImage(const FSSpec &spec) {
    FSSpecImage image{};
    struct stat parent {};
    if (::stat(ParentPath(spec.path).constData(), &parent) == 0) {
        image.vRefNum = std::int16_t(-1 - std::int16_t(parent.st_dev % 32767));
        image.parID = std::int32_t(std::uint32_t(parent.st_ino & 0xFFFFFFFFu));
    }
    QByteArray name = LastPathComponent(spec.path);
    if (name.size() > 63) {
        qsizetype end = 63;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
            --end;
        name.truncate(end);
    }
    image.name[0] = static_cast<unsigned char>(name.size());
    std::memcpy(image.name + 1, name.constData(), std::size_t(name.size()));
    return image;
}

OSErr GetPrefsFile(FSSpec *spec) {
    QByteArray folder;
    const OSErr err = FindPreferencesFolder(&folder, true);
    TestError(err);
    if (err != noErr)
        return err;
    spec->path = JoinPath(folder, kPrefsFileName);
    return noErr;
}

OSErr LoadPreference(int refNum, std::int32_t blockLength, void *buffer, std::int32_t capacity) {
    if (blockLength <= capacity) {
        const OSErr err = FSRead(refNum, blockLength, buffer);
        TestError(err);
        return err;
    }
    const OSErr readErr = FSRead(refNum, capacity, buffer);
    TestError(readErr);
    const OSErr skipErr = SetFPosFromMark(refNum, off_t(blockLength) - capacity);
    TestError(skipErr);
    return readErr != noErr ? readErr : skipErr;
}

OSErr LoadPreferences() {
    FSSpec file;
    if (OSErr err = GetPrefsFile(&file); err != noErr)
        return err;
    RemoveInterruptedSaves(file.path);

    // Only a small regular file is read, and nothing can make the open wait.
    OSErr status = noErr;
    const int refNum = OpenRegularFile(file.path, kSmallFileLimit, &status);
    if (refNum < 0 && status == fnfErr)
        return SetDefaultPreferences();
    if (refNum >= 0) {
        // The statuses of the read still pass through TestError, quietly: the
        // one alert comes after, and offers a way forward.
        OSErr hidden = noErr;
        const bool hiding = HideErrors(&hidden);
        status = ReadBlocks(refNum);
        if (hiding)
            ShowErrors();
        ::close(refNum);
    }
    if (status == noErr)
        return noErr;
    return OfferDefaultSettings(file.path, status, refNum >= 0 || status == fsDataTooBigErr);
}

OSErr SavePreference(int refNum, OSType tag, const void *data, std::int32_t length) {
    const OSType fileTag = qToBigEndian(tag);
    const std::int32_t fileLength = qToBigEndian(length);
    OSErr err = FSWrite(refNum, &fileTag, 4);
    if (err == noErr)
        err = FSWrite(refNum, &fileLength, 4);
    if (err == noErr && length >= 1)
        err = FSWrite(refNum, data, std::size_t(length));
    return err;
}

namespace {

// Written beside the file the name leads to (through any link) and renamed
// over it only when complete, with the mode the user gave the old one.
OSErr WriteSettings(const QByteArray &target) {
    QByteArray temporary = target + ".XXXXXX";
    const int refNum = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (refNum < 0)
        return OSErrFromErrno(errno);
    struct stat previous {};
    if (::stat(target.constData(), &previous) == 0)
        ::fchmod(refNum, previous.st_mode & 07777);

    AppleMenuSettings apse = appleMenuSettings;
    ToSaveAppleMenuSettings(&apse);
    OSErr status = SavePreference(refNum, kAppleMenuSettingsTag, &apse, sizeof apse);

    for (MenuSpec *spec = firstMenuSpec; spec != nullptr && status == noErr; spec = spec->next) {
        MenuSpecImage image{};
        image.side = spec->side;
        image.contents = spec->contents;
        image.titleKind = spec->titleKind;
        if (spec->contents == kContentsFolder)
            image.folder = MakeFSSpecImage(spec->folder);
        ToSaveMenuSpec(&image);
        status = SavePreference(refNum, kMenuSpecTag, &image, sizeof image);
        if (status == noErr && !spec->folderAlias.isEmpty())
            status = SavePreference(refNum, kMenuAliasTag, spec->folderAlias.constData(),
                                    std::int32_t(spec->folderAlias.size()));
        if (status == noErr && spec->contents == kContentsFolder && !spec->folder.path.isEmpty())
            status = SavePreference(refNum, kMenuPathTag, spec->folder.path.constData(),
                                    std::int32_t(spec->folder.path.size()));
    }

    if (status == noErr) {
        GeneralSettings gese = generalSettings;
        ToSaveGeneralSettings(&gese);
        status = SavePreference(refNum, kGeneralSettingsTag, &gese, sizeof gese);
    }
    if (status == noErr)
        status = SavePreference(refNum, kEndTag, nullptr, 0);
    if (status == noErr && ::fsync(refNum) != 0)
        status = OSErrFromErrno(errno);
    if (::close(refNum) != 0 && status == noErr)
        status = OSErrFromErrno(errno);
    if (status == noErr && ::rename(temporary.constData(), target.constData()) != 0)
        status = OSErrFromErrno(errno);
    if (status != noErr)
        ::unlink(temporary.constData());
    return status;
}

} // namespace

OSErr SavePreferences() {
    QByteArray folder;
    OSErr err = FindPreferencesFolder(&folder, true);
    const QByteArray path = JoinPath(folder, kPrefsFileName);
    if (err == noErr)
        err = WriteSettings(FinalTarget(path));
    if (err != noErr)
        ReportFailedSave(path, err);
    return err;
}
