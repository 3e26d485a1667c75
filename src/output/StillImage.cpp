#include "output/StillImage.h"

#include <filesystem>
#include <vector>

#include "base/Log.h"
#include "output/AtomicFile.h"

namespace tessary {

bool StillImage::saveImageFile(const std::string& folder, const std::string& fileName,
                               int32_t imagePNG, const PixelBuffer& picture) {
  const std::string path = std::filesystem::path(folder) / fileName;
  AtomicFile file(path);
  if (!file.isOpen()) {
    log("Can NOT save file: {}", path);
    log("No file can be made in the folder {}: {}", folder, file.error());
    return false;
  }
  if (picture.byteCount() == 0) {
    log("Nothing was saved to {}: there is no picture", path);
    return true;
  }
  ImageEncoder& encoder = imagePNG != 0 ? pngEncoder_ : jpegEncoder_;
  const std::vector<uint8_t> bytes = encoder.encode(picture);
  if (bytes.empty()) {
    log("The picture for {} is lost: it could not be encoded", path);
  } else if (!file.write(bytes) || !file.commit(fileSync_)) {
    log("The picture for {} is lost: {}", path, file.error());
  }
  return true;
}

}  // namespace tessary
