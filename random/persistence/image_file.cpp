#include "random/persistence/image.h"

#include <string.h>

namespace tarn::random {

ImageFile::ImageFile(const char* path, int32_t length, const char* mode) {
  if (length >= 0) {
    copy_ = static_cast<char*>(tarn_serv_allocate(int64_t{length} + 1, kRecordAlignment));
    if (!copy_) {
      status_ = TARN_RANDOM_NO_MEMORY;
      return;
    }
    memcpy(copy_, path, static_cast<size_t>(length));
    copy_[length] = 0;
    path = copy_;
  }
  file_ = fopen(path, mode);
  if (!file_) status_ = TARN_RANDOM_FILE_OPEN;
}

int32_t ImageFile::close(int32_t status) {
  const int failed = fclose(file_);
  file_ = nullptr;
  return failed ? TARN_RANDOM_FILE_CLOSE : status;
}

ImageFile::~ImageFile() {
  if (file_) fclose(file_);
  tarn_serv_deallocate(copy_);
}

}
