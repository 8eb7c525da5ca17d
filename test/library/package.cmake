# The project of somebody who uses the installed library.
cmake_minimum_required(VERSION 3.16)
project(use_vekcv C CXX)
find_package(vekcv 7.1 REQUIRED)
foreach(program use_vekcv.c use_vekcv_cpp.cpp readme.c)
    get_filename_component(name ${program} NAME_WE)
    add_executable(${name} ${program})
    target_link_libraries(${name} vekcv::vekcv)
endforeach()
