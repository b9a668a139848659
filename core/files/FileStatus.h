#pragma once

/// The result of reading or writing a user's file.
enum class FileStatus {
    done,
    cut,        ///< Read up to a limit (a million entries); the rest was left out.
    incomplete, ///< Read up to an error of the disk.
    postponed,  ///< Kept in the state folder; the next start of the program completes the file.
    notFound,   ///< No such file or folder.
    notAllowed, ///< No permission, a read-only disk, or no regular file.
    noSpace,    ///< The disk is full, or the user's share of it.
    failed,     ///< Any other error of the disk.
    tooLarge,   ///< Larger than FileReader::maxBytes.
    malformed,  ///< Not the kind of file it should be.
    busy,       ///< Another program keeps it locked.
};

/// The status that an `errno` of a file operation stands for.
FileStatus fileStatusOf(int error);
