// Holds one reference to a counted object and drops it at the end of its scope.
#ifndef VISTATRIM_SMART_PTR_H
#define VISTATRIM_SMART_PTR_H

namespace vistaTrim {

template <class T> class SmartPtr {
public:
    // With addReference false it takes over the caller's reference.
    SmartPtr(T* object, bool addReference);
    ~SmartPtr();
    SmartPtr(const SmartPtr&) = delete;
    SmartPtr& operator=(const SmartPtr&) = delete;

    T* operator->();
    // Passes the reference to the caller and leaves the SmartPtr empty.
    T* release();

private:
    T* Object;
};

template <class T> SmartPtr<T>::SmartPtr(T* object, bool addReference) : Object(object)
{
    if (addReference && Object != nullptr)
        Object->AddRef();
}

template <class T> SmartPtr<T>::~SmartPtr()
{
    if (Object != nullptr)
        Object->Release();
}

template <class T> T* SmartPtr<T>::operator->()
{
    return Object;
}

template <class T> T* SmartPtr<T>::release()
{
    T* object = Object;
    Object = nullptr;
    return object;
}

} // namespace vistaTrim

#endif
