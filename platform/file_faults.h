// Lets tests make file operations fail. What input_file.h and output_file.h ask of the system is announced here first;
// where no test listens, that costs a load and a branch.
#pragma once

namespace qs {

enum class FileOperation { Examine, Open, Read, Write, Sync, Rename, Remove };

// Answers the system's error code with which an operation is to fail, or 0 to let it happen.
using FileFault = int (*)(FileOperation);

// Null, as at first, lets everything happen.
void setFileFault(FileFault fault);

// To be called by the platform layer before each operation.
int faultOf(FileOperation operation);

}  // namespace qs
