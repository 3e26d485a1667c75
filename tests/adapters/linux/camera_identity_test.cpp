#include <gtest/gtest.h>

#include "linux/CameraIdentity.h"

namespace tessary {
namespace {

TEST(CameraIdentity, TheModelTextHoldsTheUsbNumbersInDecimal) {
  EXPECT_EQ(usbModelID(0x055e, 0xa160), "UVC Camera VendorID_1374 ProductID_41312");
  EXPECT_EQ(usbModelID(0, 0xffff), "UVC Camera VendorID_0 ProductID_65535");
}

TEST(CameraIdentity, UdevsEscapesBecomeTheirBytes) {
  const struct {
    const char* escaped;
    const char* plain;
  } rows[] = {
      {"USB\\x20Microscope", "USB Microscope"},
      {"\\x20\\x20A\\x2f\\x5C", "  A/\\"},
      {"plain", "plain"},
      {"", ""},
      // No escapes:
      {"a\\x2", "a\\x2"},
      {"a\\xg0", "a\\xg0"},
      {"a\\", "a\\"},
  };
  for (const auto& row : rows) EXPECT_EQ(unescapeUdev(row.escaped), row.plain) << row.escaped;
}

TEST(CameraIdentity, DeviceTextsAreMadeFitToShow) {
  const struct {
    const char* raw;
    const char* shown;
  } rows[] = {
      {"  Scope \t\n", "Scope"},
      {"Zoé µ 顕微鏡 🔬", "Zoé µ 顕微鏡 🔬"},
      {"", ""},
      {" \n ", ""},
      {"a\x01z\x7f", "a?z?"},
      // Bytes that are no UTF-8: a lone follower, a cut lead, an overlong slash, a surrogate, too
      // high.
      {"a\x80z", "a?z"},
      {"a\xc3", "a?"},
      {"\xc0\xaf", "??"},
      {"\xed\xa0\x80", "???"},
      {"\xf4\x90\x80\x80", "????"},
  };
  for (const auto& row : rows) EXPECT_EQ(printableText(row.raw), row.shown) << row.raw;
}

NodeRecord microscope() {
  NodeRecord node;
  node.sysPath = "/sys/devices/x/video0";
  node.connectionID = "1";
  node.devNode = "/dev/video0";
  node.path = "pci-0000:00:14.0-usb-0:2:1.0";
  node.isUsb = true;
  node.vendorID = 0x055e;
  node.productID = 0xa160;
  node.serial = "TS0001";
  node.product = "USB Microscope";
  node.index = "0";
  return node;
}

TEST(CameraIdentity, ThePortTheModelAndTheCopyMakeTheIdentity) {
  EXPECT_EQ(portIdentity(microscope()), "pci-0000:00:14.0-usb-0:2:1.0-055e:a160-TS0001-index0");
}

TEST(CameraIdentity, ARestartOrAReplugAtTheSamePortChangesNothing) {
  NodeRecord again = microscope();
  again.sysPath = "/sys/devices/y/video4";
  again.devNode = "/dev/video4";
  again.connectionID = "2";
  EXPECT_EQ(portIdentity(again), portIdentity(microscope()));
}

TEST(CameraIdentity, CamerasThatDifferInOneThingDifferInIdentity) {
  NodeRecord other[5] = {microscope(), microscope(), microscope(), microscope(), microscope()};
  other[0].path = "pci-0000:00:14.0-usb-0:3:1.0";
  other[1].productID = 0xa161;
  other[2].serial = "TS0002";
  other[3].index = "2";
  other[4].vendorID = 1;
  for (const auto& node : other) EXPECT_NE(portIdentity(node), portIdentity(microscope()));
}

TEST(CameraIdentity, ACameraWithoutSerialNumberIsKnownByItsPort) {
  NodeRecord node = microscope();
  node.serial = "";
  EXPECT_EQ(portIdentity(node), "pci-0000:00:14.0-usb-0:2:1.0-055e:a160-index0");
  node.isUsb = false;
  node.path = "platform-vivid.0";
  EXPECT_EQ(portIdentity(node), "platform-vivid.0-index0");
}

TEST(CameraIdentity, TheNameIsTheProductsOwnElseTheDriversElsePlain) {
  NodeRecord node = microscope();
  EXPECT_EQ(displayName(node, "USB Microscope: USB Micr"), "USB Microscope");
  node.product = " ";
  EXPECT_EQ(displayName(node, "vivid "), "vivid");
  EXPECT_EQ(displayName(node, ""), "Camera");
}

}  // namespace
}  // namespace tessary
