// Byte streams: the abstract QelStream with its raw write and read, a stream that
// grows in memory, and a stream over a file.
//
// Reading is const on every stream: a reader advances a cursor, which is not part
// of the content. Counts are always counts of bytes, also for the int overloads.
#ifndef QELSDK_CORE_QELSTREAM_H
#define QELSDK_CORE_QELSTREAM_H

#include <cstdio>

namespace qelsdk {

class QelStream
{
public:
    QelStream() = default;
    virtual ~QelStream();

    QelStream(const QelStream&) = delete;
    QelStream& operator=(const QelStream&) = delete;

    // The number of bytes written or read; fewer than pSize when the stream refuses
    // or runs out, 0 for a null pointer or a count below 1.
    virtual int Write(const void* pData, int pSize) = 0;
    virtual int Read(void* pData, int pSize) const = 0;

    // Typed forms of the raw operations; pSize is a count of bytes.
    int Write(const char* pData, int pSize);
    int Write(const int* pData, int pSize);
    int Read(char* pData, int pSize) const;
    int Read(int* pData, int pSize) const;
};

// Keeps everything written in one block from QelRealloc, whose capacity doubles
// when it runs out, and reads it back from a cursor that starts at the beginning.
class QelMemoryStream : public QelStream
{
public:
    QelMemoryStream();
    // A readable copy of pSize bytes of pData; empty when the copy cannot be
    // allocated.
    QelMemoryStream(const void* pData, int pSize);
    ~QelMemoryStream() override;

    using QelStream::Read;
    using QelStream::Write;
    // Appends at the end; a write that cannot grow the block writes nothing.
    int Write(const void* pData, int pSize) override;
    // Reads from the cursor and advances it by the bytes read.
    int Read(void* pData, int pSize) const override;

    // Everything written so far; null while nothing is.
    const char* GetData() const { return mData; }
    int GetSize() const { return mSize; }
    // Reading starts from the beginning again.
    void Rewind() const { mPosition = 0; }

private:
    bool Grow(int pSize);

    char* mData;
    int mSize;
    int mCapacity;
    mutable int mPosition;
};

// A file opened with std::fopen and closed by the destructor.
class QelFileStream : public QelStream
{
public:
    // pMode is an fopen mode ("rb", "wb", ...). Whether it worked: IsOpen().
    QelFileStream(const char* pPath, const char* pMode);
    ~QelFileStream() override;

    using QelStream::Read;
    using QelStream::Write;
    int Write(const void* pData, int pSize) override;
    int Read(void* pData, int pSize) const override;

    bool IsOpen() const { return mFile != nullptr; }

private:
    std::FILE* mFile;
};

} // namespace qelsdk

#endif
