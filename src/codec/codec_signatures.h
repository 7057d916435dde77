// Trace signatures of the property-object codec.
#ifndef QEL_SRC_CODEC_CODEC_SIGNATURES_H
#define QEL_SRC_CODEC_CODEC_SIGNATURES_H

namespace qel {
namespace sig {

constexpr const char kIWbem2String[] =
    "virtual void CSerializedMsg::IWbem2String(IWbemClassObject&, std::string&)";
constexpr const char kString2IWbem[] =
    "virtual void CSerializedMsg::String2IWbem(char*, IWbemClassObject&)";
constexpr const char kStringArray2Array[] =
    "virtual void CSerializedMsg::StringArray2Array(char*, "
    "std::vector<std::basic_string<char, std::char_traits<char>, std::allocator<char> >, "
    "std::allocator<std::basic_string<char, std::char_traits<char>, std::allocator<char> > > >&)";
constexpr const char kString2Array[] =
    "virtual void CSerializedMsg::String2Array(char*, "
    "std::vector<std::basic_string<char, std::char_traits<char>, std::allocator<char> >, "
    "std::allocator<std::basic_string<char, std::char_traits<char>, std::allocator<char> > > >&)";

constexpr const char kMsgParameterNull[] = "parameter is NULL";
constexpr const char kMsgInvalidAnyType[] = "Invalid type of boost::any : %s";
constexpr const char kMsgSegmentationFault[] = "Segmentation fault (%s)";
constexpr const char kMsgInvalidParameterKey[] = "Invalid parameter key=%s";
constexpr const char kMsgUnsupportedNode[] = "unsupported node type (%s)";
constexpr const char kMsgUnsupportedType[] = "unsupported type : %s";

}  // namespace sig
}  // namespace qel

#endif  // QEL_SRC_CODEC_CODEC_SIGNATURES_H
