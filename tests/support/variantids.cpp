#include "variantids.h"

#include "orvexserialdunvelprotocolclient.h"
#include "orvexserialpakorprotocolclient.h"

const VariantIds& VariantIds::of(int variant)
{
    static const VariantIds dunvel{0x3FF, 0x600, 0x601, 0x610, 0x64F, 0x500, 0x4A0, 0x4F2, 0x4F0};
    static const VariantIds pakor{0x2FF, 0x500, 0x501, 0x510, 0x54F, 0x400, 0x3A0, 0x3F2, 0x3F0};
    return variant == 0 ? dunvel : pakor;
}

std::unique_ptr<IOrvexSerialConnectionClient> VariantIds::makeClient(int variant)
{
    if (variant == 0)
        return std::make_unique<OrvexSerialDunvelProtocolClient>();
    return std::make_unique<OrvexSerialPakorProtocolClient>();
}
