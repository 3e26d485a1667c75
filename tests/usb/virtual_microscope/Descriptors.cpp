#include "virtual_microscope/Descriptors.h"

namespace tessary::lab {
namespace {

// Descriptor types
constexpr uint8_t kDevice = 1;
constexpr uint8_t kConfiguration = 2;
constexpr uint8_t kString = 3;
constexpr uint8_t kInterface = 4;
constexpr uint8_t kEndpoint = 5;
constexpr uint8_t kInterfaceAssociation = 11;
constexpr uint8_t kVideo = 0x24;

// Subtypes of kVideo, in the control interface
constexpr uint8_t kControlHeader = 1;
constexpr uint8_t kInputTerminal = 2;
constexpr uint8_t kOutputTerminal = 3;
constexpr uint8_t kProcessingUnit = 5;
// and in the streaming interface
constexpr uint8_t kInputHeader = 1;
constexpr uint8_t kFormatUncompressed = 4;
constexpr uint8_t kFrameUncompressed = 5;
constexpr uint8_t kFormatMjpeg = 6;
constexpr uint8_t kFrameMjpeg = 7;

constexpr uint8_t kVideoClass = 0x0E;
constexpr uint8_t kControlSubclass = 1;
constexpr uint8_t kStreamingSubclass = 2;
constexpr uint8_t kCollectionSubclass = 3;

// The control interface's third entity: output to USB
constexpr uint8_t kOutput = 3;

// Which controls there are, a bit each
constexpr uint32_t kCameraControls = 1 << 1 | 1 << 3;      // exposure mode and time
constexpr uint16_t kProcessingControls = 1 << 0 | 1 << 1;  // brightness and contrast

// Of text descriptors
constexpr uint8_t kMakerText = 1;
constexpr uint8_t kNameText = 2;
constexpr uint8_t kSerialText = 3;

constexpr uint8_t kToHost = 0x80;
constexpr uint8_t kBulk = 2;
constexpr uint8_t kInterrupt = 3;
constexpr uint8_t kEndpointOfClass = 0x25;
constexpr uint16_t kButtonPacket = 16;
constexpr uint8_t kButtonInterval = 8;
constexpr uint16_t kPacketSize = 512;

constexpr uint8_t kYuy2[] = {'Y',  'U', 'Y', '2',  0, 0,    0x10, 0,
                             0x80, 0,   0,   0xAA, 0, 0x38, 0x9B, 0x71};

Bytes interfaceDescriptor(uint8_t number, uint8_t endpoints, uint8_t subclass) {
  return descriptor({kInterface}, Fields()
                                      .u8(number)
                                      .u8(0)  // alternate setting
                                      .u8(endpoints)
                                      .u8(kVideoClass)
                                      .u8(subclass)
                                      .u8(0)    // protocol
                                      .u8(0));  // no text
}

Bytes cameraTerminal() {
  return descriptor({kVideo, kInputTerminal}, Fields()
                                                  .u8(kCamera)
                                                  .u16(0x0201)  // a camera
                                                  .u8(0)        // no associated terminal
                                                  .u8(0)        // no text
                                                  .zeros(6)     // no optical zoom
                                                  .u8(3)        // bytes of controls
                                                  .u16(kCameraControls)
                                                  .u8(kCameraControls >> 16));
}

Bytes processingUnit() {
  return descriptor({kVideo, kProcessingUnit}, Fields()
                                                   .u8(kProcessing)
                                                   .u8(kCamera)  // its source
                                                   .u16(0)       // no digital zoom
                                                   .u8(2)        // bytes of controls
                                                   .u16(kProcessingControls)
                                                   .u8(0));  // no text
}

Bytes outputTerminal() {
  return descriptor({kVideo, kOutputTerminal}, Fields()
                                                   .u8(kOutput)
                                                   .u16(0x0101)  // USB streaming
                                                   .u8(0)        // no associated terminal
                                                   .u8(kProcessing)
                                                   .u8(0));  // no text
}

Bytes controlDescriptors() {
  const Bytes entities = join({cameraTerminal(), processingUnit(), outputTerminal()});
  const auto header = [](size_t total) {
    return descriptor({kVideo, kControlHeader}, Fields()
                                                    .u16(0x0100)  // video class 1.0
                                                    .u16(total)
                                                    .u32(48'000'000)  // clock, Hz
                                                    .u8(1)            // streaming interfaces
                                                    .u8(kVideoStreamingInterface));
  };
  return join({header(header(0).size() + entities.size()), entities});
}

Bytes formatDescriptor(const VideoFormat& format, size_t index) {
  Fields fields;
  fields.u8(index).u8(format.sizes.size());
  if (format.coding == Coding::Mjpeg)
    fields.u8(1);  // every sample has the same size: not so, and nobody looks
  else
    fields.raw(kYuy2).u8(16);  // bits a pixel
  fields
      .u8(1)   // preselected size
      .u16(0)  // no aspect ratio
      .u8(0)   // not interlaced
      .u8(0);  // may be copied
  return descriptor({kVideo, format.coding == Coding::Mjpeg ? kFormatMjpeg : kFormatUncompressed},
                    fields);
}

Bytes frameDescriptor(Coding coding, Size size, size_t index) {
  const size_t largest = largestPicture(size);
  const size_t largestBits = largest * 8;
  return descriptor({kVideo, coding == Coding::Mjpeg ? kFrameMjpeg : kFrameUncompressed},
                    Fields()
                        .u8(index)
                        .u8(0)  // no still pictures
                        .u16(size_t(size.width))
                        .u16(size_t(size.height))
                        .u32(largestBits * 5)   // bits a second, at least
                        .u32(largestBits * 30)  // and at most
                        .u32(largest)
                        .u32(kFrameInterval)  // preselected
                        .u8(2)                // intervals to choose from
                        .u32(kFrameInterval)
                        .u32(kSlowFrameInterval));
}

Bytes streamingDescriptors(const std::vector<VideoFormat>& formats) {
  Bytes all;
  size_t formatIndex = 0;
  for (const VideoFormat& format : formats) {
    append(all, formatDescriptor(format, ++formatIndex));
    size_t frameIndex = 0;
    for (const PictureSize& size : format.sizes)
      append(all, frameDescriptor(format.coding, size.size, ++frameIndex));
  }
  const auto header = [&](size_t total) {
    return descriptor({kVideo, kInputHeader}, Fields()
                                                  .u8(formats.size())
                                                  .u16(total)
                                                  .u8(kToHost | kStreamingEndpoint)
                                                  .u8(0)  // formats don't change by themselves
                                                  .u8(kOutput)
                                                  .u8(1)  // still pictures as any other
                                                  .u8(1)  // a button
                                                  .u8(0)  // that asks for a still picture
                                                  .u8(1)  // bytes of controls a format
                                                  .zeros(formats.size()));
  };
  return join({header(header(0).size() + all.size()), all});
}

Bytes textDescriptor(const std::string& text) {
  Fields letters;
  for (const char letter : text) letters.u16(uint8_t(letter));
  return descriptor({kString}, letters);
}

}  // namespace

uint32_t largestPicture(Size size) { return uint32_t(size.width) * uint32_t(size.height) * 2; }

Bytes deviceDescriptor(const Identity& identity) {
  return descriptor({kDevice}, Fields()
                                   .u16(0x0200)  // USB 2.0
                                   .u8(0xEF)
                                   .u8(2)
                                   .u8(1)   // made of interface associations
                                   .u8(64)  // packet size of endpoint 0
                                   .u16(identity.vendor)
                                   .u16(identity.product)
                                   .u16(0x0100)  // version 1.0
                                   .u8(kMakerText)
                                   .u8(kNameText)
                                   .u8(kSerialText)
                                   .u8(1));  // configurations
}

Bytes configurationDescriptor(const std::vector<VideoFormat>& formats) {
  const Bytes association = descriptor({kInterfaceAssociation}, Fields()
                                                                    .u8(kVideoControlInterface)
                                                                    .u8(2)  // interfaces
                                                                    .u8(kVideoClass)
                                                                    .u8(kCollectionSubclass)
                                                                    .u8(0)  // protocol
                                                                    .u8(kNameText));
  const Bytes endpoint = descriptor({kEndpoint}, Fields()
                                                     .u8(kToHost | kStreamingEndpoint)
                                                     .u8(kBulk)
                                                     .u16(kPacketSize)
                                                     .u8(0));  // interval, of no meaning in bulk
  const Bytes buttonEndpoint =
      join({descriptor({kEndpoint}, Fields()
                                        .u8(kToHost | kButtonEndpoint)
                                        .u8(kInterrupt)
                                        .u16(kButtonPacket)
                                        .u8(kButtonInterval)),
            descriptor({kEndpointOfClass, kInterrupt}, Fields().u16(kButtonPacket))});
  const Bytes interfaces =
      join({association, interfaceDescriptor(kVideoControlInterface, 1, kControlSubclass),
            controlDescriptors(), buttonEndpoint,
            interfaceDescriptor(kVideoStreamingInterface, 1, kStreamingSubclass),
            streamingDescriptors(formats), endpoint});
  const auto header = [](size_t total) {
    return descriptor({kConfiguration}, Fields()
                                            .u16(total)
                                            .u8(2)      // interfaces
                                            .u8(1)      // its value
                                            .u8(0)      // no text
                                            .u8(0x80)   // powered by the bus
                                            .u8(250));  // with 500 mA
  };
  return join({header(header(0).size() + interfaces.size()), interfaces});
}

std::optional<Bytes> stringDescriptor(const Identity& identity, uint8_t index) {
  switch (index) {
    case 0: return descriptor({kString}, Fields().u16(0x0409));  // the language: American English
    case kMakerText: return textDescriptor(identity.maker);
    case kNameText: return textDescriptor(identity.name);
    case kSerialText: return textDescriptor(identity.serial);
    default: return std::nullopt;
  }
}

}  // namespace tessary::lab
