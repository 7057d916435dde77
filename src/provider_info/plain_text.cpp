#include "plain_text.h"

#include "QelItemText.h"
#include "plain_layout.h"
#include "provider_fields.h"

namespace qel {
namespace pm {
namespace {

class PlainWriter {
  public:
    explicit PlainWriter(std::string& out) : out_(out) {}

    // The provider's header item, its fields and lists, then the trimming.
    template <class Provider>
    void WriteProvider(const char* header, const Provider& provider) {
        item::AppendItem(out_, item::kTagClass, header, "");
        Write(provider);
        Finish();
    }

  private:
    // The fields of `record` and its nested lists, in layout order.
    template <class Record>
    void Write(const Record& record) {
        FieldWriter<Record> fields{*this, record};
        VisitPlainFields(PlainRecord<Record>(), fields);
    }

    template <class Record>
    struct FieldWriter {
        PlainWriter& w;
        const Record& record;

        void String(const char* name, std::string Record::*field) {
            item::AppendStringItem(w.out_, name, record.*field);
        }
        void Int(const char* name, int Record::*field) {
            item::AppendIntItem(w.out_, name, record.*field);
        }
        void Bool(const char* name, bool Record::*field) {
            item::AppendBoolItem(w.out_, name, record.*field);
        }
        void Array(const char* name, std::vector<std::string> Record::*field) {
            item::AppendStringArrayItem(w.out_, name, record.*field);
        }
        // Every list is announced even when empty, so that the forward-
        // searching reader never runs into the next element's list.
        template <class Element>
        void List(const char* name, std::vector<Element> Record::*field, ListHeader header) {
            if (header == ListHeader::kOnce)
                w.Header(name);
            for (const Element& element : record.*field) {
                if (header == ListHeader::kEveryElement)
                    w.Header(name);
                w.Write(element);
            }
        }
    };

    void Header(const char* name) {
        if (out_.size() != headersEnd_)
            headersFrom_ = out_.size();
        item::AppendItem(out_, item::kTagClassArray, name, "");
        headersEnd_ = out_.size();
    }

    // Drops the headers of empty lists that end the text. After such a
    // header nothing readable follows, and the record reader takes an
    // unreadable first field for a present one: it would add one empty
    // element. Without the header both readers find the list empty.
    void Finish() {
        if (headersEnd_ == out_.size())
            out_.resize(headersFrom_);
    }

    std::string& out_;
    std::size_t headersFrom_ = std::string::npos;  // start of the last run of headers
    std::size_t headersEnd_ = std::string::npos;   // end of that run
};

}  // namespace

void WritePlainText(const CVelmora_DevProviderManageInfo& info, std::string& out) {
    PlainWriter(out).WriteProvider(kDevProvider, info);
}

void WritePlainText(const CVelmora_ToolProviderManageInfo& info, std::string& out) {
    PlainWriter(out).WriteProvider(kToolProvider, info);
}

}  // namespace pm
}  // namespace qel
