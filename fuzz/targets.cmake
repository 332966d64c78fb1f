# The fuzz targets: kor_fuzz_target(NAME libraries…) for NAME.cpp, which defines LLVMFuzzerTestOneInput;
# its corpus is corpus/NAME/. Each is built twice: with libFuzzer here, and as a replay of its corpus by
# tests/fuzz, which every test run does.

# The tests' fakes of a request, without the rest of what tests share: the fuzz build has no tests.
add_library(fake_request STATIC ${PROJECT_SOURCE_DIR}/tests/support/fake_asp.cpp
                                 ${PROJECT_SOURCE_DIR}/tests/support/fake_request.cpp)
kor_options(fake_request)
target_include_directories(fake_request PRIVATE ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(fake_request PRIVATE korlib)

# What libkorlib.so keeps to itself and a target looks at.
add_library(korlib_readers STATIC ${PROJECT_SOURCE_DIR}/host/korlib/odbc/connection_string.cpp
                                   ${PROJECT_SOURCE_DIR}/host/korlib/variant/number_parser.cpp)
kor_options(korlib_readers)
target_include_directories(korlib_readers PUBLIC ${PROJECT_SOURCE_DIR}/host/korlib)
target_link_libraries(korlib_readers PUBLIC host_base)

kor_fuzz_target(base64_decode mirt_objects korlib)
kor_fuzz_target(configuration zelto_objects korlib)
kor_fuzz_target(connection_strings korlib_readers korlib)
kor_fuzz_target(cookies zelto_objects korlib)
kor_fuzz_target(date_text zelto_objects korlib)
kor_fuzz_target(html_encode mirt_objects korlib)
kor_fuzz_target(http_request zelto_objects korlib)
kor_fuzz_target(multipart_intake mirt_objects korlib fake_request)
kor_fuzz_target(multipart_parse mirt_objects korlib)
kor_fuzz_target(number_text korlib_readers zelto_objects korlib)
kor_fuzz_target(page_compile zelto_objects korlib)
kor_fuzz_target(page_directive zelto_objects korlib)
kor_fuzz_target(page_scanner zelto_objects korlib)
kor_fuzz_target(script_rewriter zelto_objects korlib)
kor_fuzz_target(submit_decode mirt_objects korlib)
kor_fuzz_target(template_parse mirt_objects korlib)
kor_fuzz_target(url_decode mirt_objects korlib)
kor_fuzz_target(vbscript_compile zelto_objects korlib)
