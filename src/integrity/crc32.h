// CCRC32: the CRC-32 of a file or a string, with progress events.
//
// The events carry a fraction from 0 to 1. A string raises one for every byte but those at multiples of 4096, which is
// the inverse of what one would expect and deliberate; a file raises one for each block of 32767 bytes. Nothing of a
// computation can be seen from an event handler, so a checksum is taken in one go and the events are raised round it.
// Without a sink nothing is spent on them.
#pragma once

#include "frame/object/automation_object.h"
#include "frame/object/event_source.h"
#include "integrity/crc32.idl.h"
#include "platform/handles.h"

namespace velk {

class CCRC32 final : public AutomationObject<_CCRC32> {
  public:
    static const ClassInfo kInfo;

    CCRC32() noexcept : AutomationObject(kInfo), events_(static_cast<_CCRC32*>(this), *kInfo.events) {}

    STDMETHODIMP get_InputFileName(BSTR* result) noexcept override;
    STDMETHODIMP put_InputFileName(BSTR strName) noexcept override;
    STDMETHODIMP GetCRCFromFile(LONG* result) noexcept override;
    STDMETHODIMP GetCRCFromString(BSTR* strInput, LONG* result) noexcept override;
    STDMETHODIMP GetCRCFromStringAscii(BSTR* strInput, LONG* result) noexcept override;

  private:
    void* ExtraInterface(REFIID iid) noexcept override;

    LONG ChecksumOfFile();
    LONG ChecksumOf(const void* bytes, std::size_t size) noexcept;
    LONG EndOfString(std::uint32_t running, std::size_t size) noexcept;
    void RaiseStringProgress(std::size_t size) noexcept;
    void RaiseProgress(FLOAT fraction) noexcept;

    std::wstring inputFileName_;
    EventSource events_;
};

}  // namespace velk
